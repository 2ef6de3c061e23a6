// Pages that sonascope makes of the simulator's traces, in the browser.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import type { Browser } from 'playwright-core';
import { divisor, run, story, writeTrace, type Slot } from '../data/programs';
import { open, settled, startBrowser } from './pages';

let browser: Browser;
before(async () => void (browser = await startBrowser()));
after(() => browser.close());

function pageFile(trace: string, ...options: string[]): string {
  const page = `${trace}.html`;
  run('sonascope', 'timeline', trace, '-o', page, '--force', ...options);
  return pathToFileURL(page).href;
}

test('a planted dropout is found, with the cause that why names', async () => {
  const trace = story('playback', 20_000);
  const why = join(process.env['SONAPROBE_BUILD_DIR']!, 'sonascope');
  const [dropout] = JSON.parse(spawnSync(why, ['why', '--json', trace]).stdout.toString()).dropouts;
  const { page, context, complaints, requests } = await open(browser, pageFile(trace));
  await page.locator('.verdict.dropout').click();
  await settled(page);
  const fields = new URLSearchParams(new URL(page.url()).hash.slice(1));
  const [from, to] = [Number(fields.get('from')), Number(fields.get('to'))];
  assert.ok(from < dropout.time_ns && dropout.time_ns < to && to - from < 2e8, `${from} to ${to}`);
  const finding = page.locator('.finding').first();
  assert.match(await finding.innerText(), new RegExp(`${dropout.cause}, ${dropout.certainty}`));
  assert.match(await finding.innerText(), new RegExp(dropout.culprit.method));
  await page.keyboard.press('c');
  await settled(page);
  const record = await page.locator('.sheet:visible').innerText();
  assert.match(record, new RegExp(`^${dropout.culprit.method}`));
  assert.ok(record.replaceAll(',', '').includes(String(dropout.culprit.slot)), 'its slot');
  assert.deepEqual([complaints, requests], [[], []]);
  await context.close();
});

test('a file and its names that try to break out stay text', async () => {
  const code = (place: number) => 0x01400004 + 4 * place;
  const names = ['</script><script>alert(1)//', '<img/src=x/onerror=alert(1)>', '\u202ethgir', 'bell\u0007'];
  const seen = [names[0], names[1], 'thgir', 'bell\\x07'];
  const slots = Array.from({ length: 100 }, (_, at): Slot => {
    const debugid = code((at >> 1) % names.length) + 1 + (at % 2);
    return { debugid, time: BigInt(1e6 * at), words: [0n, 0n, 0n, 0n, 7n] };
  });
  const trace = writeTrace('<img src=x onerror=alert(1)>\u202e.raw', [divisor(1000n), ...slots]);
  const lines = names.map((name, place) => `0x${code(place).toString(16)} ${name}\n`);
  writeFileSync(`${trace}.names`, lines.join(''));
  const address = pageFile(trace, '--names', `${trace}.names`);
  const { page, context, complaints, requests } = await open(browser, address);
  assert.match(await page.locator('h1').innerText(), /^<img src=x onerror=alert\(1\)>\\/);
  for (const name of seen) {
    await page.keyboard.press('/');
    await page.keyboard.type(name);
    await page.keyboard.press('Enter');
    await page.locator('#sheet-1 h2', { hasText: name }).waitFor();
  }
  assert.equal(await page.locator('img, h1 *:not(bdi), script:not([type])').count(), 1);
  assert.doesNotMatch(await page.locator('body').innerText(), /[\u202e\u0007\0]/);
  assert.deepEqual([complaints, requests], [[], []]);
  await context.close();
});

test('search, measure and the keys work over packed blocks', async () => {
  const trace = story('all', 50_000);
  const { page, context, complaints, requests } = await open(browser, pageFile(trace));
  await page.keyboard.press('/');
  await page.keyboard.type('pinSense');
  await page.locator('.search output', { hasText: /^\d+ matches$/ }).waitFor();
  await page.keyboard.press('Enter');
  await page.locator('#sheet-1 h2').waitFor();
  assert.match(await page.locator('.sheet:visible').innerText(), /pinSense/i);
  await page.keyboard.press('m');
  await page.locator('.sheet:visible tbody tr').first().waitFor();
  assert.match(await page.locator('.sheet:visible').innerText(), /begin in the measured stretch/);
  for (const key of ['f', 'o', 'g']) await page.keyboard.press(key);
  await page.locator('.lane.processor').first().waitFor();
  for (const key of ['0', 'w', 'd', 's', 'g', 'g']) await page.keyboard.press(key);
  await settled(page);
  assert.deepEqual([complaints, requests], [[], []]);
  await context.close();
});
