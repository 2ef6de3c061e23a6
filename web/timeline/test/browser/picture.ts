// Takes the picture of a page at its first dropout. Arguments: the page, and the picture to write.
import { pathToFileURL } from 'node:url';
import { open, settled, startBrowser } from './pages';

const [, , file, picture] = process.argv;
const browser = await startBrowser();
const { page } = await open(browser, pathToFileURL(file).href, {
  viewport: { width: 1200, height: 700 },
  colorScheme: 'light',
});
await page.keyboard.press('o');
await settled(page);
await settled(page);
await page.screenshot({ path: picture });
await browser.close();
