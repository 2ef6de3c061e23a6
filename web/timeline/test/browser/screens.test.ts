// What the page looks like, beside pictures that a person has looked at and accepted (screens/). Small
// differences of fonts pass; a bar, a colour or a panel out of place does not. Accept anew, after
// looking at them, with SCREENS=accept.
import assert from 'node:assert/strict';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import type { Browser } from 'playwright-core';
import { madePage, open, settled, startBrowser } from './pages';

const kFolder = 'test/browser/screens';
const kWidest = 1280; // pixels of a kept picture
const kCell = 16; // pixels of a kept picture that are compared by their mean
const kApart = 20; // of 255, from which on a cell is another
const kShare = 0.03; // of the cells may be others

let browser: Browser;
before(async () => void (browser = await startBrowser()));
after(() => browser.close());

// Work on pictures is done where pictures are understood.
async function inBlankPage<Result>(
  act: (pictures: string[], numbers: number[]) => Promise<Result>,
  pictures: readonly Buffer[],
  numbers: readonly number[],
): Promise<Result> {
  const context = await browser.newContext();
  try {
    const page = await context.newPage();
    const urls = pictures.map((picture) => `data:image/png;base64,${picture.toString('base64')}`);
    return await page.evaluate(
      ([source, some, others]) => (0, eval)(`(${source})`)(some, others) as Promise<Result>,
      [act.toString(), urls, numbers] as const,
    );
  } finally {
    await context.close();
  }
}

async function smaller(picture: Buffer, widest: number): Promise<Buffer> {
  if (picture.readUInt32BE(16) <= widest) return picture; // its width
  const made = await inBlankPage(
    async ([url], [most]) => {
      const image = new Image();
      image.src = url;
      await image.decode();
      const scale = Math.min(1, most / image.width);
      const canvas = document.createElement('canvas');
      canvas.width = Math.round(image.width * scale);
      canvas.height = Math.round(image.height * scale);
      const context = canvas.getContext('2d')!;
      context.imageSmoothingQuality = 'high';
      context.drawImage(image, 0, 0, canvas.width, canvas.height);
      return canvas.toDataURL('image/png').split(',')[1];
    },
    [picture],
    [widest],
  );
  return Buffer.from(made, 'base64');
}

// The share of cells that are not alike; 1 where the sizes differ.
function difference(one: Buffer, other: Buffer): Promise<number> {
  return inBlankPage(
    async (urls, [cell, apart]) => {
      const means: Uint8ClampedArray[] = [];
      const sizes: string[] = [];
      for (const url of urls) {
        const image = new Image();
        image.src = url;
        await image.decode();
        sizes.push(`${image.width} ${image.height}`);
        const whole = document.createElement('canvas');
        whole.width = image.width;
        whole.height = image.height;
        const context = whole.getContext('2d')!;
        context.drawImage(image, 0, 0);
        const pixels = context.getImageData(0, 0, image.width, image.height).data;
        const across = Math.ceil(image.width / cell);
        const sums = new Float64Array(3 * across * Math.ceil(image.height / cell));
        for (let y = 0; y < image.height; y++)
          for (let x = 0; x < image.width; x++)
            for (let part = 0; part < 3; part++)
              sums[3 * (Math.floor(y / cell) * across + Math.floor(x / cell)) + part] +=
                pixels[4 * (y * image.width + x) + part] / (cell * cell);
        means.push(Uint8ClampedArray.from(sums));
      }
      if (sizes[0] !== sizes[1]) return 1;
      let others = 0;
      for (let at = 0; at < means[0].length; at += 3) {
        let most = 0;
        for (let part = 0; part < 3; part++)
          most = Math.max(most, Math.abs(means[0][at + part] - means[1][at + part]));
        if (most > apart) others++;
      }
      return (3 * others) / means[0].length;
    },
    [one, other],
    [kCell, kApart],
  );
}

const kSizes = [
  [400, 800],
  [1280, 800],
  [3840, 2160],
] as const;

for (const [width, height] of kSizes)
  for (const colorScheme of ['light', 'dark'] as const)
    test(`${width} pixels, ${colorScheme}: looks as it was accepted`, async () => {
      const { page, context } = await open(browser, madePage('made', {}), {
        viewport: { width, height },
        colorScheme,
      });
      await page.keyboard.press('o');
      await settled(page);
      const picture = await smaller(await page.screenshot(), kWidest);
      await context.close();
      const kept = join(kFolder, `${width}-${colorScheme}.png`);
      if (process.env['SCREENS'] === 'accept') {
        mkdirSync(kFolder, { recursive: true });
        writeFileSync(kept, picture);
      }
      assert.ok(existsSync(kept), `${kept} is missing`);
      const apart = await difference(picture, readFileSync(kept));
      assert.ok(apart <= kShare, `${(apart * 100).toFixed(1)} % of the picture is another`);
    });

test('another colour scheme, size or place is seen as another picture', async () => {
  const read = (name: string) => readFileSync(join(kFolder, name));
  assert.ok((await difference(read('1280-light.png'), read('1280-dark.png'))) > 0.5);
  assert.equal(await difference(read('400-light.png'), read('1280-light.png')), 1);
  const { page, context } = await open(browser, madePage('made', {}), {
    viewport: { width: 1280, height: 800 },
    colorScheme: 'light',
  });
  const whole = await page.screenshot();
  await context.close();
  assert.ok(
    (await difference(whole, read('1280-light.png'))) > kShare,
    'the whole trace is no dropout',
  );
});
