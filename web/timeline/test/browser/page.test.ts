// The page in a browser, as its readers use it: by pointer, by keyboard, by screen reader, by link.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { AxeBuilder } from '@axe-core/playwright';
import type { Browser, Page } from 'playwright-core';
import { kHostile, madeTrace } from '../made_trace';
import { madePage, open, type Opened, settled, startBrowser } from './pages';

let browser: Browser;
before(async () => void (browser = await startBrowser()));
after(() => browser.close());

const kTrace = madeTrace();
const made = () => madePage('made', {});

async function opened(
  address: string,
  act: (one: Opened) => Promise<void>,
  options = {},
): Promise<void> {
  const one = await open(browser, address, options);
  try {
    await act(one);
    assert.deepEqual(one.complaints, []);
    assert.deepEqual(one.requests, []);
  } finally {
    await one.context.close();
  }
}

function spanOf(page: Page): [number, number] {
  const fields = new URLSearchParams(new URL(page.url()).hash.slice(1));
  return [Number(fields.get('from')), Number(fields.get('to'))];
}

async function press(page: Page, ...keys: readonly string[]): Promise<void> {
  for (const key of keys) {
    await page.keyboard.press(key);
    await page.waitForTimeout(60);
  }
  await settled(page);
}

const sheet = (page: Page) => page.locator('.sheet:visible');
const spoken = (page: Page) => page.locator('[aria-live]').innerText();
const lanesShown = (page: Page) => page.locator('.lane-name').allInnerTexts();

// Columns of the lanes' canvas, in CSS pixels, that have a colour of the style sheet.
function columnsOf(page: Page, canvas: string, colour: string): Promise<number[]> {
  return page.evaluate(
    ([selector, name]) => {
      const drawn = document.querySelector<HTMLCanvasElement>(selector)!;
      const style = getComputedStyle(document.documentElement).getPropertyValue(name).trim();
      const wanted = [1, 3, 5].map((at) => parseInt(style.slice(at, at + 2), 16));
      const { width, height } = drawn;
      const pixels = drawn.getContext('2d')!.getImageData(0, 0, width, height).data;
      const columns: number[] = [];
      for (let x = 0; x < width; x++)
        for (let y = 0; y < height; y++) {
          const at = 4 * (y * width + x);
          if (!wanted.every((part, channel) => pixels[at + channel] === part)) continue;
          columns.push(x / devicePixelRatio);
          break;
        }
      return columns;
    },
    [canvas, colour],
  );
}

test('the whole trace is there at first, and says when the sound broke off', async () => {
  await opened(made(), async ({ page }) => {
    assert.match(
      await page.locator('.verdict.dropout').innerText(),
      /^3 dropouts, first at 10\.080 s$/,
    );
    assert.match(await page.locator('.verdict.failure').innerText(), /^\d+ failures$/);
    assert.match(
      await sheet(page).innerText(),
      /The sound broke off 3 times[^]*Another thread's call held/,
    );
    const [first, second, third] = await lanesShown(page);
    assert.match(first, /^I\/O thread/);
    assert.match(second, /^I\/O thread/);
    assert.equal(third, 'thread 0x00001002');
  });
});

test('dropouts are red lines where they happened, and nothing else is red', async () => {
  await opened(made(), async ({ page }) => {
    await settled(page);
    const [from, to] = spanOf(page);
    const width = await page.locator('.stage > canvas').evaluate((canvas) => canvas.clientWidth);
    const columns = await columnsOf(page, '.stage > canvas', '--red');
    const near = (time: number) => (x: number) =>
      Math.abs(x - ((time - from) / (to - from)) * width) < 3;
    for (const { time } of kTrace.dropouts) assert.ok(columns.some(near(time)), `${time}`);
    const strange = columns.filter((x) => !kTrace.dropouts.some(({ time }) => near(time)(x)));
    assert.deepEqual(strange, []);
  });
});

test('a trace without dropouts says so, and has no red', async () => {
  await opened(madePage('healthy', { records: 20_000, healthy: true }), async ({ page }) => {
    assert.match(await page.locator('.verdicts').innerText(), /no dropout in this trace/);
    assert.match(await sheet(page).innerText(), /There is no dropout in this trace/);
    for (const canvas of ['.stage > canvas', '.minimap canvas', '.ruler canvas'])
      assert.deepEqual(await columnsOf(page, canvas, '--red'), []);
    await press(page, 'o');
    assert.equal(await spoken(page), 'There is no dropout in this trace.');
  });
});

test('one click goes to a dropout and marks its culprit, one more shows it', async () => {
  await opened(made(), async ({ page }) => {
    await page.locator('.verdict.dropout').click();
    await settled(page);
    const [from, to] = spanOf(page);
    const [dropout] = kTrace.dropouts;
    assert.ok(from < dropout.time && dropout.time < to && to - from < 1e8, `${from} to ${to}`);
    assert.equal(await page.locator('.moment[aria-current]').count(), 1);
    await page.locator('.finding .culprit').first().click();
    await settled(page);
    const text = await sheet(page).innerText();
    assert.match(text, /configurationChanged[^]*takes\s+\d[\d.]* ms[^]*of it, itself/);
  });
});

test("a dropout's evidence stands below it, and each record is a jump away", async () => {
  await opened(made(), async ({ page }) => {
    await press(page, 'o');
    const pieces = page.locator('.moment[aria-current] + .evidence button');
    const [overload, culprit] = await pieces.allInnerTexts();
    assert.match(overload, /^then · thread 0x00001000\nQuorraHAL::OVERLOAD/);
    assert.match(culprit, /^[\d.]+ ms before · thread 0x00001002\n→ TamsinUSBDevice::configurationChanged/);
    await pieces.nth(1).click();
    await settled(page);
    assert.match(await sheet(page).innerText(), /^configurationChanged/);
    await press(page, 'E');
    assert.match(await sheet(page).innerText(), /^OVERLOAD/);
    await press(page, 'e');
    assert.match(page.url(), new RegExp(`record=${kTrace.dropouts[0].culpritRecord}&dropout=0`));
    await press(page, 'Escape', 'Escape');
    assert.equal(await page.locator('.evidence').count(), 0);
    assert.doesNotMatch(page.url(), /dropout/);
  });
});

test('the wheel zooms at the pointer', async () => {
  await opened(made(), async ({ page }) => {
    await page.mouse.move(700, 300);
    const timeThere = () => page.locator('.tip b').innerText();
    const before = parseFloat(await timeThere());
    for (let turn = 0; turn < 5; turn++) await page.mouse.wheel(0, -300);
    await settled(page);
    await page.mouse.move(701, 300);
    await page.mouse.move(700, 300);
    const [from, to] = spanOf(page);
    assert.ok(to - from < 3e9, `${to - from}`);
    assert.ok(Math.abs(parseFloat((await timeThere()).replace(' ', '')) - before) < 0.05);
  });
});

test('dragging takes the time along, and two fingers pinch', async () => {
  const touch = { hasTouch: true };
  await opened(
    `${made()}#from=5000000000&to=6000000000`,
    async ({ page, context }) => {
      await page.mouse.move(700, 300);
      await page.mouse.down();
      await page.mouse.move(500, 300, { steps: 4 });
      await page.mouse.up();
      await settled(page);
      const [from, to] = spanOf(page);
      assert.ok(from > 5.2e9 && Math.abs(to - from - 1e9) < 10, `${from} to ${to}`);
      const session = await context.newCDPSession(page);
      const fingers = (type: 'touchStart' | 'touchMove' | 'touchEnd', ...at: number[]) =>
        session.send('Input.dispatchTouchEvent', {
          type,
          touchPoints: at.map((x, id) => ({ x, y: 300, id })),
        });
      await fingers('touchStart', 500, 600);
      await fingers('touchMove', 450, 650);
      await fingers('touchMove', 400, 700);
      await fingers('touchEnd');
      await settled(page);
      const [pinchedFrom, pinchedTo] = spanOf(page);
      assert.ok(
        Math.abs((pinchedTo - pinchedFrom) / (to - from) - 1 / 3) < 0.1,
        `${pinchedTo - pinchedFrom}`,
      );
    },
    touch,
  );
});

test('a click shows a call: line, values, duration, itself, and the calls around it', async () => {
  const [cycle] = [kTrace.dropouts[0].time - 5e6];
  await opened(`${made()}#from=${cycle - 5e6}&to=${cycle + 5e6}`, async ({ page }) => {
    const box = (await page.locator('.stage > canvas').boundingBox())!;
    await page.mouse.click(box.x + box.width / 2, box.y + 6 + 44 + 2 * 18 + 9);
    await settled(page);
    const text = await sheet(page).innerText();
    assert.match(
      text,
      /^Client\n[^]*QuorraHAL::Client - result[^]*takes[^]*of it, itself[^]*nodeID\s+21/,
    );
    assert.match(text, /Inside of\s+IOCycle, [\d.]+ ms\s+IOThread/);
    assert.ok((await columnsOf(page, '.stage > canvas', '--ink')).length > 100, 'outlined');
  });
});

test('search marks its matches on the minimap, and n and N go between them', async () => {
  await opened(made(), async ({ page }) => {
    await page.keyboard.press('/');
    await page.keyboard.type('dmainterrupt');
    await settled(page);
    const told = page.locator('.search output');
    const many = Number((await told.innerText()).replace(/\D/g, ''));
    assert.ok(many > 100);
    assert.ok((await columnsOf(page, '.minimap canvas', '--ink')).length > 50);
    await press(page, 'Enter');
    assert.match(await told.innerText(), /^1 of/);
    assert.match(await sheet(page).innerText(), /^dmaInterrupt/);
    await press(page, 'n', 'n');
    assert.match(await told.innerText(), /^3 of/);
    await press(page, 'N');
    assert.match(await told.innerText(), /^2 of/);
    await page.keyboard.press('/');
    await page.keyboard.type('no such thing anywhere');
    await settled(page);
    assert.equal(await told.innerText(), 'no match');
  });
});

test('dragging with Shift measures, with the statistics of what lies there', async () => {
  await opened(`${made()}#from=5000000000&to=6000000000`, async ({ page }) => {
    await page.keyboard.down('Shift');
    await page.mouse.move(400, 400);
    await page.mouse.down();
    await page.mouse.move(772, 400, { steps: 5 });
    await page.mouse.up();
    await page.keyboard.up('Shift');
    await settled(page);
    const width = await page.locator('.stage > canvas').evaluate((canvas) => canvas.clientWidth);
    const measured = parseFloat(await sheet(page).locator('h2').innerText());
    assert.ok(Math.abs(measured - (372 / width) * 1000) < 3, `${measured} ms`);
    const rows = await sheet(page).locator('tbody tr').allInnerTexts();
    assert.ok(rows.length > 5 && rows.some((row) => /^IOCycle\s+\d/.test(row)), rows.join('\n'));
    await press(page, 'Escape');
    assert.match(await sheet(page).innerText(), /Nothing is measured/);
  });
});

test('everything by keyboard', async () => {
  await opened(made(), async ({ page }) => {
    await press(page, 'o');
    assert.match(await spoken(page), /^Dropout 1 of 3, at 10\.079 7 s\. Another thread's call/);
    await press(page, 'o', 'o', 'O');
    assert.match(await spoken(page), /^Dropout 2 of 3/);
    await press(page, 'c');
    assert.match(await sheet(page).innerText(), /^configurationChanged/);
    const around = spanOf(page);
    await press(page, 'i');
    assert.match(await sheet(page).innerText(), /Inside of/);
    await press(page, 'u');
    assert.match(await sheet(page).innerText(), /^configurationChanged/);
    await press(page, 'j');
    const [, recordAfter] = /record=(\d+)/.exec(page.url())!;
    await press(page, 'k');
    assert.notEqual(/record=(\d+)/.exec(page.url())![1], recordAfter);
    await press(page, 'm');
    assert.match(await spoken(page), /^Measured/);
    assert.match(await sheet(page).innerText(), /begin in the measured stretch/);
    await press(page, 'Escape', 'Escape', 'w');
    assert.ok(spanOf(page)[1] - spanOf(page)[0] < around[1] - around[0]);
    const from = spanOf(page)[0];
    await press(page, 'd');
    assert.ok(spanOf(page)[0] > from);
    await press(page, 'f');
    assert.match(await sheet(page).innerText(), /failed/);
    await press(page, '0');
    assert.ok(spanOf(page)[0] < 0 && spanOf(page)[1] > kTrace.end);
  });
});

test('two keystrokes from any dropout to its neighbourhood and its cause', async () => {
  await opened(made(), async ({ page }) => {
    for (const [at, { time, culpritRecord }] of kTrace.dropouts.entries())
      for (const chosen of ['', `&dropout=${(at + 1) % kTrace.dropouts.length}`]) {
        await page.goto(`${made()}#from=${time - 5e7}&to=${time + 5e7}${chosen}`);
        await settled(page);
        await press(page, 'o');
        const [from, to] = spanOf(page);
        assert.ok(from < time && time < to && to - from < 1e8, `${time}: ${from} to ${to}`);
        assert.match(page.url(), new RegExp(`dropout=${at}$`));
        await press(page, 'c');
        if (culpritRecord < 0) assert.match(await spoken(page), /^No call is named/);
        else assert.match(page.url(), new RegExp(`record=${culpritRecord}&`));
      }
    // The other way round, from the end.
    await press(page, 'Escape', 'Escape', '0', 'O');
    assert.match(await spoken(page), /^Dropout 3 of 3/);
    // After the last comes the first.
    const last = kTrace.dropouts.at(-1)!.time;
    await page.goto(`${made()}#from=${last + 5e7}&to=${last + 1e8}`);
    await settled(page);
    await press(page, 'o');
    assert.match(await spoken(page), /^Dropout 1 of 3/);
  });
});

test('WASD and the arrows zoom and move', async () => {
  await opened(`${made()}#from=5000000000&to=6000000000`, async ({ page }) => {
    const moves: [string, number, number][] = [
      ['w', 0.6, 0],
      ['s', 1 / 0.6, 0],
      ['d', 1, 0.2],
      ['a', 1, -0.2],
      ['ArrowRight', 1, 0.2],
      ['ArrowLeft', 1, -0.2],
    ];
    for (const [key, factor, share] of moves) {
      const [from, to] = spanOf(page);
      await press(page, key);
      const [movedFrom, movedTo] = spanOf(page);
      assert.ok(Math.abs((movedTo - movedFrom) / (to - from) - factor) < 1e-6, key);
      const moved = (movedFrom + movedTo - from - to) / 2 / (to - from);
      assert.ok(Math.abs(moved - share) < 1e-6, `${key} moved ${moved}`);
    }
  });
});

test('lanes are chosen, pinned, folded, hidden and grouped by keyboard', async () => {
  await opened(made(), async ({ page }) => {
    const lanes = await lanesShown(page);
    await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown');
    assert.equal(await page.locator('.lane.current .lane-name').innerText(), lanes[2]);
    await press(page, 'p');
    assert.equal((await lanesShown(page))[0], lanes[2]);
    await press(page, 'Space');
    assert.equal(await page.locator('.lane.folded .lane-name').innerText(), lanes[2]);
    await press(page, 'x');
    assert.ok(!(await lanesShown(page)).includes(lanes[2]));
    await press(page, 'X', 'g');
    assert.equal(await page.locator('.heading', { hasText: 'processor 0' }).count(), 1);
    assert.equal(await page.locator('select').inputValue(), 'processor');
    await press(page, 'g');
    const heading = page.locator('.heading button').first();
    const [, group] = /^▾ (\w+) · \d+ thread/.exec(await heading.innerText())!;
    const before = await lanesShown(page);
    await heading.click();
    await settled(page);
    assert.equal(await heading.getAttribute('aria-expanded'), 'false');
    assert.notDeepEqual(await lanesShown(page), before);
    assert.match(page.url(), new RegExp(`closed=${group}$`));
    await press(page, 'g', 'End', 'l');
    assert.match(page.url(), /idle=shown/);
    await press(page, 't');
    assert.match(await sheet(page).innerText(), /on the screen[^]*method\s+takes\s+begins/);
    await press(page, '?');
    assert.ok(
      await page
        .getByRole('dialog')
        .getByText('the next dropout and its neighbourhood')
        .isVisible(),
    );
    await press(page, 'Escape');
    assert.equal(await page.getByRole('dialog').count(), 0);
  });
});

test('a link brings the same view back', async () => {
  let address = '';
  const picture = (page: Page) =>
    page.evaluate(() =>
      [...document.querySelectorAll('canvas')].map((canvas) => canvas.toDataURL()),
    );
  let before: string[] = [];
  await opened(made(), async ({ page }) => {
    await press(page, 'o', 'c', 'm', 'ArrowDown', 'p', 'g', '/');
    await page.keyboard.type('sendVerb');
    await settled(page);
    address = page.url();
    before = await picture(page);
  });
  await opened(address, async ({ page }) => {
    await press(page, '2');
    assert.equal(page.url(), address);
    assert.equal(await page.locator('.search input').inputValue(), 'sendVerb');
    assert.match(await sheet(page).innerText(), /^configurationChanged/);
    assert.deepEqual(await picture(page), before, 'minimap, ruler and lanes');
    await press(page, '1');
    assert.equal(await page.locator('.moment[aria-current] + .evidence li').count(), 2);
  });
});

test('each lane on the screen has a table of its calls, for those who do not see it', async () => {
  await opened(made(), async ({ page }) => {
    await page.waitForTimeout(400);
    await press(page, 'o');
    await page.waitForTimeout(400);
    const lane = page.getByRole('region', { name: 'I/O thread 0x00001000' });
    const rows = lane.locator('tbody tr');
    assert.ok((await rows.count()) >= 3);
    assert.match(
      await lane.locator('caption').innerText(),
      /^I\/O thread 0x00001000: .*\d+ calls on the screen/,
    );
    assert.match(
      (await rows.allTextContents()).join('\n'),
      /IOCycle[\d.]+ ms10\.0\d\d \d{3} sQuorraHAL/,
    );
  });
});

test('a hostile trace stays text', async () => {
  await opened(madePage('hostile', { records: 20_000, hostile: true }), async ({ page }) => {
    const title = await page.title();
    const scripts = await page.locator('script, img, b b').count();
    await press(page, 'l', '/');
    await page.keyboard.type('<img');
    await settled(page);
    await press(page, 'Enter', '2');
    assert.match(await sheet(page).innerText(), /^<img src=x onerror=/);
    assert.match(await page.locator('h1').innerText(), /<\/script><script>.*left \\u202e thgir/);
    assert.equal(await page.title(), title);
    assert.equal(await page.locator('script, img, b b').count(), scripts);
    await page.keyboard.press('/');
    await page.keyboard.type('long long');
    await settled(page);
    await press(page, 'Enter', '2');
    assert.match(await sheet(page).innerText(), /long long[^]*… \(1,000,000 characters\)/);
    assert.ok((await page.content()).length < 1e6, 'the long name is cut');
    const seen = await page.locator('body').innerText();
    for (const unseen of ['\u202e', '\u0007', '\u0000', kHostile[5]])
      assert.ok(!seen.includes(unseen), JSON.stringify(unseen.slice(0, 20)));
  });
});

for (const colorScheme of ['light', 'dark'] as const)
  test(`axe finds nothing, ${colorScheme}`, async () => {
    const check = async (page: Page, what: string) => {
      const found = await new AxeBuilder({ page }).analyze();
      const told = found.violations.map(
        ({ id, nodes }) =>
          `${id}: ${nodes.map((node) => `${node.html} ${node.failureSummary}`).join('; ')}`,
      );
      assert.deepEqual(told, [], what);
    };
    const act = async ({ page }: Opened) => {
      await page.waitForTimeout(400);
      await check(page, 'at first');
      await press(page, 'o');
      await check(page, 'a dropout');
      await press(page, 'c');
      await check(page, 'a record');
      await press(page, 'm');
      await check(page, 'statistics');
      await press(page, '4', 'g');
      await check(page, 'calls, by processor');
      await press(page, '?');
      await check(page, 'keys');
    };
    const one = await open(browser, made(), { colorScheme });
    await act(one);
    await one.context.close();
    const narrow = await open(browser, made(), {
      colorScheme,
      viewport: { width: 400, height: 800 },
    });
    await act(narrow);
    await narrow.context.close();
  });

test('the colours follow the system, while the page is open', async () => {
  const look = (page: Page) =>
    page.evaluate(() => [
      ...[...document.querySelectorAll('canvas')].map((canvas) => canvas.toDataURL()),
      ...['--paper', '--family-0'].map((name) =>
        getComputedStyle(document.documentElement).getPropertyValue(name),
      ),
    ]);
  const looks = new Map<string, string[]>();
  for (const colorScheme of ['light', 'dark'] as const)
    await opened(made(), async ({ page }) => void looks.set(colorScheme, await look(page)), {
      colorScheme,
    });
  looks.get('light')!.forEach((part, at) => assert.notEqual(part, looks.get('dark')![at]));
  await opened(made(), async ({ page }) => {
    for (const colorScheme of ['dark', 'light'] as const) {
      await page.emulateMedia({ colorScheme });
      await settled(page);
      assert.deepEqual(await look(page), looks.get(colorScheme), colorScheme);
    }
  });
});

test('with reduced motion a jump is there in one frame', async () => {
  await opened(
    made(),
    async ({ page }) => {
      const frames = await page.evaluate(async () => {
        const shown = () => document.querySelector<HTMLElement>('.window')!.style.width;
        document.dispatchEvent(new KeyboardEvent('keydown', { key: 'w', bubbles: true }));
        await new Promise((next) => requestAnimationFrame(next));
        await new Promise((next) => requestAnimationFrame(next));
        const early = shown();
        await new Promise((next) => setTimeout(next, 400));
        return [early, shown()];
      });
      assert.equal(frames[0], frames[1]);
    },
    { reducedMotion: 'reduce' },
  );
});
