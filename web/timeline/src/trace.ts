// What the page's view asks of a trace: the border between src/data/, which unpacks, and src/view/,
// which draws. Times are nanoseconds from the file's first record, as numbers; record numbers count
// the records of the trace from 0.

// A code, as the decoders name it, or "code 0x01400004" where none does.
export interface EventKind {
  readonly code: number;
  readonly driver: string; // "" without a decoder
  readonly method: string;
  readonly family: number; // which hue its driver's family has, from 0
}

export type LaneKind = 'io' | 'thread' | 'processor';

export interface Lane {
  readonly id: number; // its place in Trace.lanes
  readonly kind: LaneKind;
  readonly name: string; // "thread 0x00001c3a", "processor 2", "PlexoEngine"
  readonly depth: number; // rows of calls it needs
  // Of a processor, the next three are not counted: 0, 0 and "".
  readonly records: number;
  readonly busy: number; // ns inside calls of depth 0, waiting of an I/O thread left out
  readonly driver: string; // of most of its records
  readonly processor: number; // where most of its records are
  readonly begin: number; // its first and last record
  readonly end: number;
}

export interface Dropout {
  readonly record: number;
  readonly time: number;
  readonly lane: number;
  readonly lacking: number; // ns
  readonly cause: string; // "blocked-by", as `sonascope why` names it
  readonly meaning: string; // the same as a sentence without its end
  readonly certainty: string;
  readonly culprit: string; // "OrvelHDAWidget::pinSense, thread 0x00001c41", "" where none is named
  readonly culpritRecord: number; // -1 where none is
  readonly evidence: readonly number[]; // records that prove it, ascending: those that `why` prints
}

// Bits of a bar's or point's flags.
export const kFailure = 1;
export const kCutOff = 2;
export const kUnfinished = 4;
export const kMerged = 8; // several calls that share a pixel; record is the longest one's start
export const kWaiting = 16; // an I/O thread waits here for its next cycle
export const kThinned = 32; // with kMerged: some of the calls are not in the page, which a note explains

// Calls on the screen, a column each: reused from frame to frame, so that a frame allocates nothing.
export interface Bars {
  count: number;
  begin: Float64Array;
  end: Float64Array;
  depth: Uint16Array;
  event: Uint16Array; // place in Trace.events
  flags: Uint8Array;
  record: Float64Array; // the start's
}

// Records that are no part of a call, and ends without a start, which have kCutOff. A point's depth is
// that of the innermost call around it.
export interface Points {
  count: number;
  time: Float64Array;
  depth: Uint16Array;
  event: Uint16Array;
  flags: Uint8Array;
  record: Float64Array;
}

// Cycles of an I/O thread. A cycle's deadline is due plus its budget. Of those that share a pixel the
// latest past its deadline stands for all.
export interface Cycles {
  count: number;
  begin: Float64Array;
  end: Float64Array;
  due: Float64Array; // NaN where it is not known
  budget: Float64Array;
  dropout: Uint8Array; // 1 where an OVERLOAD belongs to it
  record: Float64Array; // the start's
}

export interface NamedValue {
  readonly name: string;
  readonly text: string; // as the line prints it
}

export interface RecordDetail {
  readonly record: number;
  readonly slot: number;
  readonly time: number;
  readonly lane: number; // its thread's
  readonly processor: number;
  readonly event: number;
  readonly qualifier: number;
  readonly object: string; // "0xffffff8022e08000", "" where the code has none
  readonly line: string; // group, method and text, as `sonaprobe -r` prints them
  readonly values: readonly NamedValue[];
  readonly flags: number;
  readonly call: { readonly begin: number; readonly end: number; readonly self: number } | null;
  readonly parents: readonly number[]; // records of the starts around it, the innermost first
}

export interface StatisticsRow {
  readonly event: number;
  readonly calls: number;
  readonly failures: number;
  readonly total: number; // ns, as the others
  readonly self: number;
  readonly median: number;
  readonly max: number;
  readonly longest: number; // record
}

export interface Matches {
  readonly time: Float64Array; // in the order of time
  readonly record: Float64Array;
  readonly complete: boolean; // false while blocks are still searched
}

export interface Selection {
  readonly from: number;
  readonly to: number;
  readonly lanes: readonly number[] | null; // null: all threads
}

// Where the record is wide and the trace's overview is narrow: buckets of equal width over the span.
export interface Overview {
  readonly busy: Float32Array; // share of time inside calls, 0 to 1
  readonly failures: Uint32Array;
  readonly records: Uint32Array;
}

export interface Trace {
  readonly title: string; // the file's name
  readonly records: number;
  readonly begin: number; // of the shown span
  readonly end: number;
  readonly notes: readonly string[]; // what the page must tell: the divisor was assumed, calls were merged, ...
  readonly events: readonly EventKind[];
  readonly families: readonly string[]; // names of the hues
  readonly lanes: readonly Lane[];
  readonly dropouts: readonly Dropout[];
  readonly overview: Overview; // there from the start

  // Settles once every block was unpacked and search covers all of the trace.
  readonly ready: Promise<void>;
  // Called when something that was asked for has been unpacked meanwhile: draw again.
  onUnpacked(callback: () => void): void;

  // What of a lane lies in [from, to), in the order of depth and time; what is shorter than nsPerPixel
  // is merged with its neighbours. Blocks not yet unpacked are shown as far as the pyramid knows them:
  // the answer is true once it is exact.
  bars(lane: number, from: number, to: number, nsPerPixel: number, into: Bars): boolean;
  points(lane: number, from: number, to: number, nsPerPixel: number, into: Points): boolean;
  cycles(lane: number, from: number, to: number, nsPerPixel: number, into: Cycles): boolean;

  detail(record: number): Promise<RecordDetail>;
  // Over names and texts, case ignored; answers again and again until it is complete or stopped.
  search(words: string, found: (matches: Matches) => void, stop: AbortSignal): void;
  statistics(selection: Selection): Promise<readonly StatisticsRow[]>;
  // Failures in the order of time, of the whole trace.
  failures(): Promise<Matches>;
}
