// What the page and its worker say to each other.

import type { Matches, RecordDetail, Selection, StatisticsRow } from '../trace';
import type { BarColumns, LongCalls } from './bars';
import type { CycleColumns } from './cycles';

// What can be asked: an engine's methods, in the worker or beside it.
export interface Asked {
  bars(block: number): Promise<BarColumns>;
  level(number: number): Promise<BarColumns>;
  long(): Promise<LongCalls>;
  // What ran on the processors; their lanes are places in Head.processors.
  processorBars(block: number): Promise<BarColumns>;
  processorLevel(number: number): Promise<BarColumns>;
  cycles(): Promise<Map<number, CycleColumns>>;
  detail(record: number): Promise<RecordDetail>;
  statistics(selection: Selection): Promise<readonly StatisticsRow[]>;
  failures(): Promise<Matches>;
  search(words: string, found: (matches: Matches) => void, stop: AbortSignal): Promise<void>;
  addChunk(id: string, text: string): void;
}

export type Request =
  | { readonly head: string }
  | { readonly chunk: string; readonly text: string }
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
