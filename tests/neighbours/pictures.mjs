// Takes pictures of a trace in speedscope and as a flame graph. Arguments: the export and its picture,
// the graph and its picture.
import {chromium} from 'playwright-core';
import {fileURLToPath} from 'node:url';

const [speedscope, speedscopePicture, graph, graphPicture] = process.argv.slice(2);
const viewer = fileURLToPath(import.meta.resolve('speedscope/dist/release/index.html'));
const browser = await chromium.launch({executablePath: '/usr/bin/chromium', args: ['--no-sandbox']});
const page = await browser.newPage({viewport: {width: 1000, height: 500}});
await page.goto('file://' + viewer);
await page.setInputFiles('input[type=file]', speedscope);
await page.getByText('Left Heavy').click();
await page.waitForTimeout(1000);  // it draws on a canvas
await page.screenshot({path: speedscopePicture});
await page.goto('file://' + graph);
await page.locator('svg').first().screenshot({path: graphPicture});
await browser.close();
