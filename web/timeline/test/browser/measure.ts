// Measures, in the browser: a page, and beside it the same trace's export opened in speedscope. How
// long until the first picture stands and until all is ready, how much memory the process that shows
// it holds, how long frames take while a reader zooms and pans.
import { readFileSync, statSync } from 'node:fs';
import { pathToFileURL } from 'node:url';
import type { Browser, Page } from 'playwright-core';
import { startBrowser } from './pages';

const kPatience = 180_000; // ms for a load
const kWidth = Number(process.env['WIDTH'] ?? 1280); // pixels
const kHeight = (kWidth * 5) / 8;

interface Frames {
  readonly wall: number[]; // ms, ascending
  readonly processor: number[];
}

interface TraceEvent {
  readonly name: string;
  readonly dur?: number;
  readonly tdur?: number;
  readonly args: { data?: { frames?: { processId: number }[] } };
}

async function traced(
  browser: Browser,
  page: Page,
  category: string,
  act: (page: Page) => Promise<void>,
): Promise<TraceEvent[]> {
  await browser.startTracing(page, { categories: [category] });
  await act(page);
  const trace = JSON.parse((await browser.stopTracing()).toString()) as { traceEvents: TraceEvent[] };
  return trace.traceEvents;
}

// MiB of the process that shows the page; what it shares, by its share.
async function memoryOf(browser: Browser, page: Page): Promise<string> {
  const category = 'disabled-by-default-devtools.timeline';
  const events = await traced(browser, page, category, () => Promise.resolve());
  const begun = events.find(({ name }) => name === 'TracingStartedInBrowser');
  const { processId } = begun!.args.data!.frames![0];
  const told = readFileSync(`/proc/${processId}/smaps_rollup`, 'utf8');
  return (Number(/^Pss:\s+(\d+)/m.exec(told)![1]) / 1024).toFixed(0);
}

// In to a hundredth of a second and along, out again, along at every width.
async function wander(page: Page): Promise<void> {
  await page.mouse.move(700, 300);
  for (let turn = 0; turn < 30; turn++) {
    await page.mouse.wheel(0, -150);
    await page.waitForTimeout(40);
    if (turn % 5 === 0) await page.keyboard.press('d');
  }
  for (let step = 0; step < 20; step++) {
    await page.keyboard.press(step % 4 ? 'd' : 'a');
    await page.waitForTimeout(60);
  }
  for (let turn = 0; turn < 30; turn++) {
    await page.mouse.wheel(0, 150);
    await page.waitForTimeout(40);
    if (turn % 5 === 0) await page.keyboard.press('a');
  }
}

// What the page did in each animation frame, as the browser's own trace has it: by the wall clock,
// which other programs disturb, and in time of a processor.
async function framesOf(browser: Browser, page: Page): Promise<Frames> {
  const events = await traced(browser, page, 'devtools.timeline', wander);
  const frames = events.filter(({ name, dur }) => name === 'FireAnimationFrame' && dur);
  const ascending = (times: number[]) => times.sort((one, other) => one - other);
  return {
    wall: ascending(frames.map(({ dur }) => dur! / 1e3)),
    processor: ascending(frames.map(({ tdur }) => (tdur ?? 0) / 1e3)),
  };
}

async function inNewPage<Result>(act: (browser: Browser, page: Page) => Promise<Result>): Promise<Result> {
  const browser = await startBrowser();
  try {
    const context = await browser.newContext({ viewport: { width: kWidth, height: kHeight } });
    const page = await context.newPage();
    page.setDefaultTimeout(kPatience);
    return await act(browser, page);
  } finally {
    await browser.close();
  }
}

// What a page without anything takes.
async function measureEmpty(): Promise<string> {
  return inNewPage(async (browser, page) => {
    await page.goto('data:text/html,<!doctype html><title>empty</title>');
    await page.waitForTimeout(1000);
    return memoryOf(browser, page);
  });
}

async function measurePage(records: number, file: string): Promise<string[]> {
  const size = statSync(file).size;
  return inNewPage(async (browser, page) => {
    await page.goto(pathToFileURL(file).href, { timeout: kPatience });
    const ready = await page.waitForFunction(() => performance.getEntriesByName('ready')[0]?.startTime);
    const first = await page.waitForFunction(
      () => performance.getEntriesByName('first-contentful-paint')[0]?.startTime,
    );
    const times = [await first.jsonValue(), await ready.jsonValue()].map((time) => time!.toFixed(0));
    const { wall, processor } = await framesOf(browser, page);
    return [
      String(records),
      (size / 1e6).toFixed(1),
      (size / records).toFixed(1),
      ...times,
      await memoryOf(browser, page),
      ...[wall, processor].flatMap((frames) => [0.5, 0.99, 1].map((share) => percentile(frames, share))),
    ];
  });
}

// From handing the file over until its first profile is drawn: the title is the file's then. Chromium
// ends a page that has no room left.
async function measureSpeedscope(records: number, file: string, speedscope: string): Promise<string[]> {
  const cells = [String(records), (statSync(file).size / 1e6).toFixed(1)];
  return inNewPage(async (browser, page) => {
    const crash = new Promise<never>((_, refuse) =>
      page.on('crash', () => refuse(new Error('out of memory'))),
    );
    const load = async (): Promise<string[]> => {
      let refusal = '';
      page.on('dialog', (dialog) => {
        refusal = dialog.message();
        void dialog.dismiss();
      });
      await page.goto(pathToFileURL(speedscope).href);
      const empty = await page.title();
      const begun = performance.now();
      await page.setInputFiles('input[type=file]', file);
      await page.waitForFunction((before) => document.title !== before, empty);
      await page.evaluate(() => new Promise((drawn) => requestAnimationFrame(drawn)));
      if (refusal) throw new Error(refusal);
      const taken = performance.now() - begun;
      return [...cells, taken.toFixed(0), await memoryOf(browser, page)];
    };
    try {
      return await Promise.race([load(), crash]);
    } catch (error) {
      return [...cells, (error as Error).message.split('\n')[0]];
    }
  });
}

function percentile(sorted: readonly number[], share: number): string {
  return (sorted[Math.ceil(share * sorted.length) - 1] ?? NaN).toFixed(1);
}

function tell(rows: readonly (readonly string[])[]): void {
  const widths = rows[0].map((head) => Math.max(head.length, 8));
  for (const row of rows)
    console.log(row.map((cell, at) => cell.padStart(widths[at])).join('  '));
}

// Arguments: speedscope's page; then records, a page and an export, in turn.
const [, , speedscope, ...given] = process.argv;
const pages = [
  ['records', 'MB', 'bytes/record', 'first picture ms', 'ready ms', 'memory MiB'].concat(
    ...['wall clock', 'processor'].map((clock) => [`frame ms, ${clock}: median`, 'p99', 'max']),
  ),
];
const exports = [['records', 'MB', 'load ms', 'memory MiB']];
for (let at = 0; at + 2 < given.length; at += 3) {
  const records = Number(given[at]);
  pages.push(await measurePage(records, given[at + 1]));
  exports.push(await measureSpeedscope(records, given[at + 2], speedscope));
}
console.log(`An empty page takes ${await measureEmpty()} MiB.\n\nThe page of sonascope timeline`);
tell(pages);
console.log('\nThe same trace, exported to speedscope, in speedscope');
tell(exports);
