// A page's data opened in node: what open.ts does in a browser, without a worker.

import { readFileSync } from 'node:fs';

import { bytesOfTexts, inflated } from '../../src/data/bytes';
import { Engine } from '../../src/data/engine';
import { readHead, type Head } from '../../src/data/head';
import { PageTrace } from '../../src/data/page_trace';

const kChunk = /<script type="application\/octet-stream" id="([a-z0-9]+)">([^<]*)<\/script>/g;

export interface OpenedPage {
  readonly trace: PageTrace;
  readonly engine: Engine;
  readonly head: Head;
}

// ISO-8859-15 and Latin-1 differ in characters alone that no chunk has.
export async function openPage(path: string): Promise<OpenedPage> {
  const page = readFileSync(path, 'latin1');
  let engine: Engine | undefined;
  let head: Head | undefined;
  for (const [, id, text] of page.matchAll(kChunk)) {
    if (id === 'head') {
      head = readHead(await inflated(bytesOfTexts([text!])));
      engine = new Engine(head);
    } else {
      engine!.addChunk(id!, bytesOfTexts([text!]));
    }
  }
  return { trace: new PageTrace(head!, engine!), engine: engine!, head: head! };
}
