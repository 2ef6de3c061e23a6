// Builds pages over made traces, with the policy of the real ones, and opens them in Chromium.
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { existsSync, mkdtempSync, readFileSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { type Browser, type BrowserContext, chromium, type Page } from 'playwright-core';
import type { Making } from '../made_trace';

const kFolder = mkdtempSync(join(tmpdir(), 'timeline-pages-'));

export function startBrowser(): Promise<Browser> {
  const executablePath = process.env['CHROMIUM'] ?? '/usr/bin/chromium';
  if (!existsSync(executablePath)) throw new Error(`no browser at ${executablePath}`);
  return chromium.launch({
    executablePath,
    args: [
      '--no-sandbox',
      '--disable-gpu',
      '--disable-quic',
      '--no-first-run',
      '--disable-background-networking',
      '--disable-component-update',
      '--disable-sync',
      '--font-render-hinting=none',
    ],
  });
}

function bundle(entry: string, out: string): string {
  const file = join(kFolder, out);
  execFileSync('esbuild', [
    entry,
    '--bundle',
    '--minify',
    '--log-level=warning',
    `--outfile=${file}`,
  ]);
  return readFileSync(file, 'utf8').trim();
}

function hash(text: string): string {
  return `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
}

let parts: { script: string; style: string } | null = null;

// The address of a page over a trace made so; a file on disk.
export function madePage(name: string, making: Making): string {
  parts ??= {
    script: bundle('test/browser/made_page.ts', 'page.js'),
    style: bundle('src/page.css', 'page.css'),
  };
  const { script, style } = parts;
  const policy = `default-src 'none'; script-src ${hash(script)}; style-src ${hash(style)}`;
  const file = join(kFolder, `${name}.html`);
  const data = JSON.stringify(making).replaceAll('"', '&quot;');
  writeFileSync(
    file,
    `<!doctype html><html lang="en"><head><meta charset="iso-8859-15">
<meta http-equiv="Content-Security-Policy" content="${policy}">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>${name}</title><style>${style}</style></head>
<body><div id="timeline" data-making="${data}"></div><script>${script}</script></body></html>`,
  );
  return pathToFileURL(file).href;
}

export interface Opened {
  readonly page: Page;
  readonly context: BrowserContext;
  readonly complaints: string[]; // of the console, and errors
  readonly requests: string[]; // but the page itself
}

export async function open(
  browser: Browser,
  address: string,
  options: Parameters<Browser['newContext']>[0] = {},
): Promise<Opened> {
  const context = await browser.newContext({
    viewport: { width: 1280, height: 800 },
    ...options,
  });
  const page = await context.newPage();
  const complaints: string[] = [];
  const requests: string[] = [];
  page.on('console', (message) => {
    if (['error', 'warning'].includes(message.type())) complaints.push(message.text());
  });
  page.on('pageerror', (error) => complaints.push(String(error)));
  page.on('request', (request) => {
    const plain = (text: string) => text.replace(/#.*/, '');
    const ofItself = request.url().startsWith('blob:'); // the page's own worker
    if (!ofItself && plain(request.url()) !== plain(address)) requests.push(request.url());
  });
  await page.goto(address);
  await page.waitForSelector('.lane');
  await settled(page);
  return { page, context, complaints, requests };
}

// Waits until easing is over, and the address and tables have followed.
export async function settled(page: Page): Promise<void> {
  await page.waitForTimeout(500);
}
