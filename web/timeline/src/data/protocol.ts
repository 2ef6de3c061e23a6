// What the page and its worker say to each other.

import type { Matches, RecordDetail, Selection, StatisticsRow } from '../trace';
import type { BarColumns, LongCalls } from './bars';
import type { CycleLevels } from './cycles';
import type { Head } from './head';

// What can be asked: an engine's methods, in the worker or beside it.
export interface Asked {
  bars(block: number): Promise<BarColumns>;
  level(number: number): Promise<BarColumns>;
  long(): Promise<LongCalls>;
  // What ran on the processors; their lanes are places in Head.processors.
  processorBars(block: number): Promise<BarColumns>;
  processorLevel(number: number): Promise<BarColumns>;
  cycles(): Promise<Map<number, CycleLevels>>;
  detail(record: number): Promise<RecordDetail>;
  statistics(selection: Selection): Promise<readonly StatisticsRow[]>;
  failures(): Promise<Matches>;
  search(words: string, found: (matches: Matches) => void, stop: AbortSignal): Promise<void>;
  addChunk(id: string, bytes: Uint8Array<ArrayBuffer>): void;
}

export type Request =
  | { readonly head: Head }
  | { readonly chunk: string; readonly bytes: Uint8Array<ArrayBuffer> }
  | { readonly stop: number }
  | {
      readonly ask: number; // the answer's number
      readonly method: Exclude<keyof Asked, 'addChunk'>;
      readonly argument: unknown;
    };

export interface Answer {
  readonly ask: number;
  readonly value?: unknown;
  readonly matches?: Matches; // of a search that goes on
  readonly error?: string;
}
