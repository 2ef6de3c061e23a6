// Opens the data of the page that this script stands in.

import workerScript from 'worker-script';

import type { Trace } from '../trace';
import { bytesOfText, inflated } from './bytes';
import { Client } from './client';
import { readHead } from './head';
import { PageTrace } from './page_trace';

const kChunk = 'script[type="application/octet-stream"]';

// Gives each chunk away as soon as it is whole, and takes it out of the page: its characters need
// not be kept twice.
function giveAway(page: Document, give: (id: string, text: string) => void): void {
  const giveWhole = (): void => {
    for (const chunk of page.querySelectorAll(kChunk)) {
      // The last one may still be coming.
      if (page.readyState === 'loading' && chunk.nextElementSibling === null) return;
      give(chunk.id, chunk.textContent);
      chunk.remove();
    }
  };
  const watcher = new MutationObserver(giveWhole);
  watcher.observe(page.body, { childList: true });
  page.addEventListener('DOMContentLoaded', () => {
    watcher.disconnect();
    giveWhole();
  });
  giveWhole();
}

export async function openTrace(page: Document): Promise<Trace> {
  const chunk = page.querySelector('#head');
  if (chunk === null) throw new Error('this page has no data');
  const text = chunk.textContent;
  chunk.remove();
  const client = new Client(workerScript, text);
  giveAway(page, (id, chunkText) => client.addChunk(id, chunkText));
  return new PageTrace(readHead(await inflated(bytesOfText(text))), client);
}
