// Loads files into speedscope in a browser; prints, for each, the title that the page gets and
// everything that it warns of.
import {chromium} from 'playwright-core';
import {fileURLToPath} from 'node:url';

const page_file = fileURLToPath(import.meta.resolve('speedscope/dist/release/index.html'));
const browser = await chromium.launch({executablePath: '/usr/bin/chromium', args: ['--no-sandbox']});
const told = [];
for (const file of process.argv.slice(2)) {
  const page = await browser.newPage();
  const warnings = [];
  page.on('console', (message) => {
    const graphics = message.text().includes('GL Driver Message');  // this machine has none
    if (['warning', 'error'].includes(message.type()) && !graphics) warnings.push(message.text());
  });
  page.on('pageerror', (error) => warnings.push(String(error)));
  page.on('dialog', async (dialog) => {
    warnings.push(dialog.message());
    await dialog.dismiss();
  });
  await page.goto('file://' + page_file);
  const empty = await page.title();
  await page.setInputFiles('input[type=file]', file);
  const end = Date.now() + 20000;
  while (await page.title() === empty && warnings.length === 0) {
    const failed = await page.getByText('Something went wrong').count() > 0;
    if (failed || Date.now() > end) warnings.push('nothing was shown');
    await page.waitForTimeout(100);
  }
  await page.waitForTimeout(300);
  told.push({title: await page.title(), warnings});
  await page.close();
}
await browser.close();
console.log(JSON.stringify(told));
