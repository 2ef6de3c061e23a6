// The head of a page's data, as src/scope/timeline/ writes it: what the first picture needs, and
// what the other chunks refer to.

// [word 1 to 5, bits dropped above, bits dropped below]
export type Slice = readonly [number, number, number];

export interface Piece {
  readonly literal: string;
  readonly reading?: number; // see texts.ts
  readonly slice?: Slice;
  readonly name?: string;
  readonly signExtend?: boolean;
  readonly zeroFill?: boolean;
  readonly alternate?: boolean;
  readonly width?: number;
  readonly later?: Slice;
  readonly words?: readonly [string, string]; // not 0, 0
}

// A code with a qualifier and the text that answers it.
export interface Kind {
  readonly event: number;
  readonly qualifier: number;
  readonly object?: boolean; // arg1 is one
  readonly point?: boolean; // its starts are points
  readonly waits?: boolean; // its calls are an I/O thread's waiting
  readonly name?: string; // of a code without decoder
  readonly text?: {
    readonly group: string;
    readonly method: string;
    readonly pieces?: readonly Piece[]; // none where the event is silent
  };
}

export interface HeadLane {
  readonly kind: 'io' | 'thread';
  readonly thread: number; // its number in the chunks
  readonly id: string;
  readonly name: string;
  readonly depth: number;
  readonly records: number;
  readonly busy: number;
  readonly processor: number;
  readonly driver: string;
  readonly begin: number;
  readonly end: number;
}

export interface HeadDropout {
  readonly record: number;
  readonly time: number;
  readonly lane: number;
  readonly lacking: number;
  readonly cause: string;
  readonly meaning: string;
  readonly certainty: string;
  readonly culprit?: string;
  readonly culpritRecord?: number;
  readonly evidence: readonly number[];
}

export interface Head {
  readonly format: number;
  readonly title: string;
  readonly records: number;
  readonly begin: number;
  readonly end: number;
  readonly notes: readonly string[];
  readonly events: readonly { code: number; driver: string; method: string; family: number }[];
  readonly families: readonly string[];
  readonly kinds: readonly Kind[];
  readonly symbols: readonly number[]; // kind, thread, words: three numbers each
  readonly lanes: readonly HeadLane[];
  readonly dropouts: readonly HeadDropout[];
  readonly processors: readonly number[]; // that have records, ascending
  readonly overview: { busy: number[]; failures: number[]; records: number[] };
  readonly blocks: readonly number[]; // first record, least and latest time: three numbers each
  readonly levels: readonly number[]; // resolutions, the coarsest first
}

export const kFormat = 1;

export function readHead(bytes: Uint8Array): Head {
  const head = JSON.parse(new TextDecoder().decode(bytes)) as Head;
  if (head.format !== kFormat) throw new Error(`data of format ${head.format}`);
  return head;
}

// By thread number: its lane.
export function lanesOfThreads(head: Head): Uint32Array {
  const lanes = new Uint32Array(1 + head.lanes.reduce((most, lane) => Math.max(most, lane.thread), 0));
  head.lanes.forEach((lane, place) => (lanes[lane.thread] = place));
  return lanes;
}
