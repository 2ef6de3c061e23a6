// The page's side of its worker.

import type { Matches, RecordDetail, Selection, StatisticsRow } from '../trace';
import type { BarColumns, LongCalls } from './bars';
import type { CycleLevels } from './cycles';
import type { Head } from './head';
import type { Answer, Asked, Request } from './protocol';

interface Waiting {
  readonly settle: (value: unknown) => void;
  readonly refuse: (error: Error) => void;
  readonly found?: (matches: Matches) => void;
}

export class Client implements Asked {
  private readonly worker: Worker;
  private readonly waiting = new Map<number, Waiting>();
  private asks = 0;

  constructor(script: string) {
    const url = URL.createObjectURL(new Blob([script], { type: 'text/javascript' }));
    this.worker = new Worker(url);
    this.worker.onmessage = (event: MessageEvent<Answer>) => this.take(event.data);
    this.worker.onerror = (event) => {
      for (const { refuse } of this.waiting.values()) refuse(new Error(event.message));
      this.waiting.clear();
    };
  }

  // To be called before anything is asked.
  open(head: Head): void {
    this.send({ head });
  }

  private send(request: Request, transfer: ArrayBuffer[] = []): void {
    this.worker.postMessage(request, transfer);
  }

  private take({ ask, value, matches, error }: Answer): void {
    const waiting = this.waiting.get(ask);
    if (waiting === undefined) return;
    if (matches !== undefined) {
      waiting.found?.(matches);
      return;
    }
    this.waiting.delete(ask);
    if (error === undefined) waiting.settle(value);
    else waiting.refuse(new Error(error));
  }

  private ask<Value>(
    method: Exclude<keyof Asked, 'addChunk'>,
    argument: unknown,
    found?: (matches: Matches) => void,
  ): { ask: number; answer: Promise<Value> } {
    const ask = ++this.asks;
    const answer = new Promise<Value>((settle, refuse) => {
      this.waiting.set(ask, {
        settle: (value) => settle(value as Value),
        refuse,
        ...(found === undefined ? {} : { found }),
      });
    });
    this.send({ ask, method, argument });
    return { ask, answer };
  }

  addChunk(id: string, bytes: Uint8Array<ArrayBuffer>): void {
    this.send({ chunk: id, bytes }, [bytes.buffer]);
  }
  bars(block: number): Promise<BarColumns> {
    return this.ask<BarColumns>('bars', block).answer;
  }
  level(number: number): Promise<BarColumns> {
    return this.ask<BarColumns>('level', number).answer;
  }
  long(): Promise<LongCalls> {
    return this.ask<LongCalls>('long', null).answer;
  }
  processorBars(block: number): Promise<BarColumns> {
    return this.ask<BarColumns>('processorBars', block).answer;
  }
  processorLevel(number: number): Promise<BarColumns> {
    return this.ask<BarColumns>('processorLevel', number).answer;
  }
  cycles(): Promise<Map<number, CycleLevels>> {
    return this.ask<Map<number, CycleLevels>>('cycles', null).answer;
  }
  detail(record: number): Promise<RecordDetail> {
    return this.ask<RecordDetail>('detail', record).answer;
  }
  statistics(selection: Selection): Promise<readonly StatisticsRow[]> {
    return this.ask<StatisticsRow[]>('statistics', selection).answer;
  }
  failures(): Promise<Matches> {
    return this.ask<Matches>('failures', null).answer;
  }
  search(words: string, found: (matches: Matches) => void, stop: AbortSignal): Promise<void> {
    const { ask, answer } = this.ask<void>('search', words, (matches) => {
      if (!stop.aborted) found(matches);
    });
    stop.addEventListener('abort', () => this.send({ stop: ask }));
    return answer;
  }
}
