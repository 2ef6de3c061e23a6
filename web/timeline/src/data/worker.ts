// The worker: unpacks, searches and counts, so that the page can draw meanwhile.

import type { Matches, Selection } from '../trace';
import { buffersOf, type BarColumns } from './bars';
import { buffersOfCycles } from './cycles';
import { Engine } from './engine';
import type { Answer, Request } from './protocol';

const searches = new Map<number, AbortController>();
let engine: Engine;

function reply(answer: Answer, transfer: ArrayBuffer[] = []): void {
  self.postMessage(answer, { transfer });
}

async function answer(request: Extract<Request, { ask: number }>): Promise<void> {
  const { ask, method, argument } = request;
  switch (method) {
    case 'bars':
    case 'level':
    case 'processorBars':
    case 'processorLevel': {
      const value: BarColumns = await engine[method](argument as number);
      return reply({ ask, value }, buffersOf(value));
    }
    case 'search': {
      const stop = new AbortController();
      searches.set(ask, stop);
      const found = (matches: Matches): void => reply({ ask, matches });
      await engine.search(argument as string, found, stop.signal);
      searches.delete(ask);
      return reply({ ask });
    }
    case 'cycles': {
      const value = await engine.cycles();
      return reply({ ask, value }, [...value.values()].flatMap(buffersOfCycles));
    }
    case 'detail':
      return reply({ ask, value: await engine.detail(argument as number) });
    case 'statistics':
      return reply({ ask, value: await engine.statistics(argument as Selection) });
    default:
      return reply({ ask, value: await engine[method]() });
  }
}

self.onmessage = (event: MessageEvent<Request>): void => {
  const request = event.data;
  if ('head' in request) {
    engine = new Engine(request.head);
  } else if ('chunk' in request) {
    engine.addChunk(request.chunk, request.bytes);
  } else if ('stop' in request) {
    searches.get(request.stop)?.abort();
  } else {
    answer(request).catch((error: unknown) => reply({ ask: request.ask, error: String(error) }));
  }
};
