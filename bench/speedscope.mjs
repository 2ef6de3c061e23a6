// Prints how many milliseconds speedscope takes from a file's choice to its picture, in a browser.
import {createRequire} from 'node:module';
import {fileURLToPath} from 'node:url';

const neighbours = fileURLToPath(new URL('../tests/neighbours/', import.meta.url));
const {chromium} = createRequire(neighbours)('playwright-core');
const page_file = neighbours + 'node_modules/speedscope/dist/release/index.html';

const browser = await chromium.launch({executablePath: '/usr/bin/chromium', args: ['--no-sandbox']});
const page = await browser.newPage();
await page.goto('file://' + page_file);
const empty = await page.title();
const begin = performance.now();
await page.setInputFiles('input[type=file]', process.argv[2]);
await page.waitForFunction((before) => document.title !== before, empty, {timeout: 300000});
console.log(performance.now() - begin);
await browser.close();
