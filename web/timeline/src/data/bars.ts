// Calls, or points, in rows: of one lane at one depth, in the order of time.

import { kMerged } from '../trace';
import { ColumnReader, NumberReader } from './bytes';

// Columns of all rows, one row after the other; they can go from a worker to the page.
export interface BarColumns {
  readonly lanes: Uint32Array; // of each row, ascending
  readonly depths: Uint32Array; // of each row: depth * 2, + 1 for points
  readonly starts: Uint32Array; // where each row begins; one more than there are rows
  readonly begin: Float64Array;
  readonly end: Float64Array;
  readonly event: Uint16Array;
  readonly flags: Uint8Array;
  readonly record: Float64Array;
}

export function buffersOf(columns: BarColumns): ArrayBuffer[] {
  return Object.values(columns).map((column) => column.buffer as ArrayBuffer);
}

export function sizeOf(columns: BarColumns): number {
  return buffersOf(columns).reduce((sum, buffer) => sum + buffer.byteLength, 0);
}

export function emptyColumns(): BarColumns {
  return columnsOf(0, 0);
}

export function columnsOf(rows: number, bars: number): BarColumns {
  return {
    lanes: new Uint32Array(rows),
    depths: new Uint32Array(rows),
    starts: new Uint32Array(rows + 1),
    begin: new Float64Array(bars),
    end: new Float64Array(bars),
    event: new Uint16Array(bars),
    flags: new Uint8Array(bars),
    record: new Float64Array(bars),
  };
}

// Calls that lie in more than one block.
export interface LongCalls extends BarColumns {
  readonly endRecord: Float64Array;
  readonly self: Float64Array;
}

interface PackedRow {
  readonly lane: number;
  readonly depth: number;
  readonly count: number;
}

// The rows of a packed level come by thread, and are wanted by lane.
function readRows(reader: NumberReader, laneOfThread: Uint32Array): PackedRow[] {
  const rows: PackedRow[] = [];
  let thread = 0;
  for (let left = reader.next(); left > 0; --left) {
    thread += reader.next();
    const depth = reader.next();
    rows.push({ lane: laneOfThread[thread]!, depth, count: reader.next() });
  }
  return rows;
}

function readColumns(bytes: Uint8Array, laneOfThread: Uint32Array, withCalls: boolean): LongCalls {
  const reader = new NumberReader(bytes);
  const quantum = reader.next();
  const packed = readRows(reader, laneOfThread);
  const order = packed.map((_, place) => place);
  order.sort((a, b) => packed[a]!.lane - packed[b]!.lane || packed[a]!.depth - packed[b]!.depth);
  const total = packed.reduce((sum, row) => sum + row.count, 0);
  const columns = columnsOf(packed.length, total);
  const places = new Uint32Array(packed.length);
  order.forEach((row, place) => {
    columns.lanes[place] = packed[row]!.lane;
    columns.depths[place] = packed[row]!.depth;
    columns.starts[place + 1] = columns.starts[place]! + packed[row]!.count;
    places[row] = columns.starts[place]!;
  });
  const numbers = new ColumnReader(reader);
  const forEach = (put: (at: number, first: boolean) => void): void => {
    packed.forEach((row, place) => {
      const start = places[place]!;
      for (let at = start; at < start + row.count; ++at) put(at, at === start);
    });
  };
  const { begin, end, event, flags, record } = columns;
  forEach((at, first) => (begin[at] = (first ? 0 : begin[at - 1]!) + numbers.nextSigned()));
  forEach((at) => (end[at] = (begin[at]! + numbers.next()) * quantum));
  for (let i = 0; i < total; ++i) begin[i]! *= quantum;
  forEach((at) => (event[at] = numbers.next()));
  forEach((at) => (flags[at] = numbers.next()));
  forEach((at, first) => (record[at] = (first ? 0 : record[at - 1]!) + numbers.nextSigned()));
  const endRecord = new Float64Array(withCalls ? total : 0);
  const self = new Float64Array(withCalls ? total : 0);
  if (withCalls) {
    forEach((at) => (endRecord[at] = record[at]! + numbers.next()));
    forEach((at) => (self[at] = numbers.nextSigned()));
  }
  return { ...columns, endRecord, self };
}

export function readLevel(bytes: Uint8Array, laneOfThread: Uint32Array): BarColumns {
  const { endRecord: _, self: __, ...columns } = readColumns(bytes, laneOfThread, false);
  return columns;
}

export function emptyLongCalls(): LongCalls {
  return { ...emptyColumns(), endRecord: new Float64Array(0), self: new Float64Array(0) };
}

export function readLongCalls(bytes: Uint8Array, laneOfThread: Uint32Array): LongCalls {
  return readColumns(bytes, laneOfThread, true);
}

// All bars, and those of others that have a flag, row by row in the order of time.
export function joined(bars: BarColumns, others: BarColumns, flag: number): BarColumns {
  const lanes: number[] = [];
  const depths: number[] = [];
  const starts = [0];
  const from: BarColumns[] = [];
  const places: number[] = [];
  const keyOf = ({ lanes, depths }: BarColumns, row: number): number =>
    row < lanes.length ? lanes[row]! * 2 ** 32 + depths[row]! : Infinity;
  for (let a = 0, b = 0; a < bars.lanes.length || b < others.lanes.length; ) {
    const key = Math.min(keyOf(bars, a), keyOf(others, b));
    lanes.push(Math.floor(key / 2 ** 32));
    depths.push(key % 2 ** 32);
    const inA = keyOf(bars, a) === key;
    const inB = keyOf(others, b) === key;
    let next = inA ? bars.starts[a]! : 0;
    const end = inA ? bars.starts[a + 1]! : 0;
    const put = (source: BarColumns, at: number): void => {
      from.push(source);
      places.push(at);
    };
    for (let at = inB ? others.starts[b]! : 0; inB && at < others.starts[b + 1]!; ++at) {
      if ((others.flags[at]! & flag) === 0) continue;
      for (; next < end && bars.begin[next]! < others.begin[at]!; ++next) put(bars, next);
      put(others, at);
    }
    for (; next < end; ++next) put(bars, next);
    starts.push(places.length);
    if (inA) ++a;
    if (inB) ++b;
  }
  const of = (name: 'begin' | 'end' | 'event' | 'flags' | 'record') => (_: unknown, i: number) =>
    from[i]![name][places[i]!]!;
  return {
    lanes: Uint32Array.from(lanes),
    depths: Uint32Array.from(depths),
    starts: Uint32Array.from(starts),
    begin: Float64Array.from(places, of('begin')),
    end: Float64Array.from(places, of('end')),
    event: Uint16Array.from(places, of('event')),
    flags: Uint8Array.from(places, of('flags')),
    record: Float64Array.from(places, of('record')),
  };
}

interface BarRow {
  readonly begin: number[];
  readonly end: number[];
  readonly event: number[];
  readonly flags: number[];
  readonly record: number[];
  cell: number; // of the latest bar, NaN where it is not short
  longest: number; // call of the latest bar
}

// Bars in rows as they come, each row in the order of time. Those shorter than the resolution are
// merged with what begins in the same cell.
export class BarRows {
  private readonly rows = new Map<number, BarRow>();
  constructor(private readonly resolution: number) {}

  add(lane: number, depth: number, begin: number, end: number, event: number, flags: number, record: number): void {
    const row = this.rowOf(lane * 0x2_0000 + depth);
    const last = row.begin.length - 1;
    const isShort = end - begin < this.resolution;
    const cell = isShort ? Math.floor(begin / this.resolution) : NaN;
    if (cell === row.cell) {
      row.flags[last]! |= flags | kMerged;
      row.end[last] = Math.max(row.end[last]!, end);
      if (end - begin <= row.longest) return;
      row.event[last] = event;
      row.record[last] = record;
    } else {
      row.cell = cell;
      row.begin.push(begin);
      row.end.push(end);
      row.event.push(event);
      row.flags.push(flags);
      row.record.push(record);
    }
    row.longest = end - begin;
  }

  addAll({ lanes, depths, starts, begin, end, event, flags, record }: BarColumns): void {
    lanes.forEach((lane, row) => {
      for (let at = starts[row]!; at < starts[row + 1]!; ++at) {
        this.add(lane, depths[row]!, begin[at]!, end[at]!, event[at]!, flags[at]!, record[at]!);
      }
    });
  }

  private rowOf(key: number): BarRow {
    let row = this.rows.get(key);
    if (row === undefined) {
      row = { begin: [], end: [], event: [], flags: [], record: [], cell: NaN, longest: 0 };
      this.rows.set(key, row);
    }
    return row;
  }

  columns(): BarColumns {
    const keys = [...this.rows.keys()].sort((one, other) => one - other);
    const total = keys.reduce((sum, key) => sum + this.rows.get(key)!.begin.length, 0);
    const columns = columnsOf(keys.length, total);
    keys.forEach((key, place) => {
      const row = this.rows.get(key)!;
      const start = columns.starts[place]!;
      columns.lanes[place] = Math.floor(key / 0x2_0000);
      columns.depths[place] = key % 0x2_0000;
      columns.starts[place + 1] = start + row.begin.length;
      for (const name of ['begin', 'end', 'event', 'flags', 'record'] as const) columns[name].set(row[name], start);
    });
    return columns;
  }
}

// The first row of a lane: rows[lane] of a block, found once a frame.
export function firstRowOf(columns: BarColumns, lane: number): number {
  let low = 0;
  let high = columns.lanes.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (columns.lanes[middle]! < lane) low = middle + 1;
    else high = middle;
  }
  return low;
}

// The first of [from, to) whose value is not below what is looked for.
export function lowerBound(values: Float64Array, from: number, to: number, value: number): number {
  while (from < to) {
    const middle = (from + to) >>> 1;
    if (values[middle]! < value) from = middle + 1;
    else to = middle;
  }
  return from;
}
