// Measures pages in the browser: when the first picture stands, when all is ready, how long frames
// take while a reader zooms and pans, how much memory the page's processes hold.
import { readFileSync, statSync } from 'node:fs';
import { pathToFileURL } from 'node:url';
import type { Browser, Page } from 'playwright-core';
import { startBrowser } from './pages';

interface Measured {
  readonly first: number; // ms
  readonly ready: number;
  readonly memory: number; // MB
  readonly frames: number[]; // ms, ascending
}

// Times what the page does in each animation frame; runs before the page's own script.
function watchFrames(): void {
  const request = window.requestAnimationFrame.bind(window);
  const frames: number[] = [];
  Object.assign(window, { measuredFrames: frames });
  window.requestAnimationFrame = (callback) =>
    request((now) => {
      const begin = performance.now();
      callback(now);
      frames.push(performance.now() - begin);
    });
}

function timesOf(page: Page): Promise<{ first: number; ready: number }> {
  return page.evaluate(
    () =>
      new Promise<{ first: number; ready: number }>((done, refuse) => {
        setTimeout(() => refuse(new Error('the page is not ready after a minute')), 60_000);
        const look = () => {
          const [ready] = performance.getEntriesByName('ready');
          const [first] = performance.getEntriesByName('first-contentful-paint');
          if (ready && first) done({ first: first.startTime, ready: ready.startTime });
          else setTimeout(look, 20);
        };
        look();
      }),
  );
}

// MB of the processes that show pages, shared ones counted by their share.
async function memoryOf(browser: Browser): Promise<number> {
  const session = await browser.newBrowserCDPSession();
  const { processInfo } = await session.send('SystemInfo.getProcessInfo');
  await session.detach();
  let kilobytes = 0;
  for (const { id, type } of processInfo) {
    if (type !== 'renderer') continue;
    const told = /^Pss:\s+(\d+)/m.exec(readFileSync(`/proc/${id}/smaps_rollup`, 'utf8'));
    kilobytes += Number(told?.[1] ?? 0);
  }
  return kilobytes / 1024;
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

async function measure(address: string): Promise<Measured> {
  const browser = await startBrowser();
  try {
    const context = await browser.newContext({ viewport: { width: 1280, height: 800 } });
    const page = await context.newPage();
    await page.addInitScript(watchFrames);
    await page.goto(address, { timeout: 120_000 });
    const times = await timesOf(page);
    await wander(page);
    const frames = await page.evaluate(() => Reflect.get(window, 'measuredFrames') as number[]);
    frames.sort((one, other) => one - other);
    return { ...times, memory: await memoryOf(browser), frames };
  } finally {
    await browser.close();
  }
}

function percentile(sorted: readonly number[], share: number): string {
  return (sorted[Math.ceil(share * sorted.length) - 1] ?? NaN).toFixed(1);
}

// Arguments: records and a page, in turn.
console.log(
  '   records    MB  bytes/record  first picture ms  ready ms  memory MB  frame ms: median   p99   max',
);
for (let at = 2; at + 1 < process.argv.length; at += 2) {
  const records = Number(process.argv[at]);
  const file = process.argv[at + 1];
  const size = statSync(file).size;
  const { first, ready, memory, frames } = await measure(pathToFileURL(file).href);
  const cells: [string, number][] = [
    [String(records), 10],
    [(size / 1e6).toFixed(1), 6],
    [(size / records).toFixed(1), 14],
    [first.toFixed(0), 18],
    [ready.toFixed(0), 10],
    [memory.toFixed(0), 11],
    [percentile(frames, 0.5), 18],
    [percentile(frames, 0.99), 6],
    [percentile(frames, 1), 6],
  ];
  console.log(cells.map(([text, width]) => text.padStart(width)).join(''));
}
