// Opens the data of the page that this script stands in.

import workerScript from 'worker-script';

import type { Trace } from '../trace';
import { bytesOfTexts, inflated } from './bytes';
import { Client } from './client';
import { readHead } from './head';
import { PageTrace } from './page_trace';

const kChunk = 'script[type="application/octet-stream"]';

// Takes a chunk out of the page. Until it next tidies up, the browser keeps removed nodes, and a
// script's whole text beside them: so both are emptied.
function bytesTaken(chunk: Element): Uint8Array<ArrayBuffer> {
  const nodes = [...chunk.childNodes] as Text[];
  const bytes = bytesOfTexts(nodes.map((node) => node.data));
  for (const node of nodes) node.data = '';
  chunk.textContent = '';
  chunk.remove();
  return bytes;
}

// Gives each chunk away as soon as it is whole.
function giveAway(page: Document, give: (id: string, bytes: Uint8Array<ArrayBuffer>) => void): void {
  const giveWhole = (): void => {
    for (const chunk of page.querySelectorAll(kChunk)) {
      // The last one may still be coming.
      if (page.readyState === 'loading' && chunk.nextElementSibling === null) return;
      give(chunk.id, bytesTaken(chunk));
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
  const client = new Client(workerScript);
  const head = readHead(await inflated(bytesTaken(chunk)));
  client.open(head);
  giveAway(page, (id, bytes) => client.addChunk(id, bytes));
  return new PageTrace(head, client);
}
