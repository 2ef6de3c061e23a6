// The calls of a block: its records say what they open and close. Which end belongs to which start
// was found when the page was made.

import { kCutOff, kFailure, kWaiting } from '../trace';
import { columnsOf, type BarColumns } from './bars';
import { kCloseAll, type RecordBlock } from './block';
import { Room } from './room';
import { Role, type Symbols } from './symbols';

const kNone = -1;

// What a block's records do, one after the other. Calls opened before the block close unseen.
export interface Visitor {
  open(index: number, lane: number, depth: number): void;
  // `end` is the index of the record that closed it, or -1 where all were.
  close(start: number, lane: number, end: number, time: number, finished: boolean): void;
  point(index: number, lane: number, open: number, orphan: boolean): void;
  after?(index: number, lane: number): void; // all that a record does
}

// The records before `end`.
export function replay(
  block: RecordBlock,
  symbols: Symbols,
  lanes: number,
  end: number,
  visitor: Visitor,
): void {
  const before = new Uint32Array(lanes); // open since before the block
  const innermost = new Int32Array(lanes).fill(kNone);
  const depth = new Uint32Array(lanes); // of calls of the block
  const around = new Int32Array(block.count);
  const busy = new Set<number>();
  block.used.forEach((symbol, place) => {
    const lane = symbols.lane[symbol]!;
    before[lane] = Math.max(before[lane]!, block.depths[place]!);
  });
  const close = (lane: number, by: number, time: number, finished: boolean): void => {
    const start = innermost[lane]!;
    if (start === kNone) {
      if (before[lane]! > 0) --before[lane]!;
      return;
    }
    innermost[lane] = around[start]!;
    --depth[lane]!;
    visitor.close(start, lane, by, time, finished);
  };
  const closeAll = (time: number): void => {
    for (const lane of busy) {
      while (innermost[lane] !== kNone) close(lane, kNone, time, false);
    }
    before.fill(0);
    busy.clear();
  };

  let deed = 0;
  for (let i = 0; i < end; ++i) {
    let closed = kNone;
    for (; deed < block.deeds.length && block.deeds[deed]!.index === i; ++deed) {
      const { closed: calls, time } = block.deeds[deed]!;
      if (calls === kCloseAll) closeAll(time);
      else closed = calls;
    }
    const symbol = block.symbol[i]!;
    const lane = symbols.lane[symbol]!;
    const time = block.time[i]!;
    switch (symbols.role[symbol]! as Role) {
      case Role.start:
        for (; closed > 0; --closed) close(lane, i, time, false);
        visitor.open(i, lane, before[lane]! + depth[lane]!);
        around[i] = innermost[lane]!;
        innermost[lane] = i;
        ++depth[lane]!;
        busy.add(lane);
        break;
      case Role.end:
        if (closed === kNone) closed = 1;
        if (closed === 0) visitor.point(i, lane, before[lane]! + depth[lane]!, true);
        for (; closed > 0; --closed) close(lane, i, time, closed === 1);
        break;
      case Role.point:
        visitor.point(i, lane, before[lane]! + depth[lane]!, false);
        break;
    }
    visitor.after?.(i, lane);
  }
  for (; deed < block.deeds.length && block.deeds[deed]!.index <= end; ++deed) {
    const { closed, time } = block.deeds[deed]!;
    if (closed === kCloseAll && end === block.count) closeAll(time);
  }
}

// The calls that begin and end in the block, and its points; of calls also their self time.
export interface BlockCalls {
  readonly columns: BarColumns;
  readonly self: Float64Array;
  readonly finished: Uint8Array;
}

const kDeepest = 0xfffe;
const room = new Room();

export function callsOf(block: RecordBlock, symbols: Symbols, lanes: number): BlockCalls {
  const { count, time } = block;
  room.empty();
  const failed = room.bytes(count);
  for (const failure of block.failures) failed[failure] = 1;

  // As they close: place n of each.
  const start = room.words(count);
  const endTime = room.numbers(count);
  const flags = room.bytes(count);
  const row = room.words(count);
  const selfOf = room.numbers(count);
  const whole = room.bytes(count);
  let found = 0;

  const depthOf = room.words(count); // by start
  const inside = room.numbers(count);
  const parent = new Int32Array(lanes).fill(kNone);
  const around = room.signedWords(count);

  const rows = new Map<number, number>();
  const keys: number[] = [];
  const rowOf = (lane: number, depth: number, points: number): number => {
    const key = lane * 0x2_0000 + Math.min(depth, kDeepest) * 2 + points;
    let number = rows.get(key);
    if (number === undefined) {
      number = keys.length;
      rows.set(key, number);
      keys.push(key);
    }
    return number;
  };
  replay(block, symbols, lanes, count, {
    open(index, lane, depth) {
      depthOf[index] = depth;
      around[index] = parent[lane]!;
      parent[lane] = index;
    },
    close(from, lane, by, at, finished) {
      const length = at - time[from]!;
      const outer = around[from]!;
      parent[lane] = outer;
      if (outer !== kNone) inside[outer]! += length;
      start[found] = from;
      endTime[found] = at;
      row[found] = rowOf(lane, depthOf[from]!, 0);
      selfOf[found] = length - inside[from]!;
      whole[found] = finished ? 1 : 0;
      const failure = failed[from] === 1 || (finished && failed[by] === 1);
      flags[found] =
        (failure ? kFailure : 0) |
        (finished ? 0 : kCutOff) |
        (symbols.waits[block.symbol[from]!] === 1 ? kWaiting : 0);
      ++found;
    },
    point(index, lane, open, orphan) {
      start[found] = index;
      endTime[found] = time[index]!;
      row[found] = rowOf(lane, Math.max(0, open - 1), 1);
      flags[found] = (failed[index] === 1 ? kFailure : 0) | (orphan ? kCutOff : 0);
      ++found;
    },
  });

  // Into rows, which keep the order of time.
  const order = keys.map((_, place) => place).sort((a, b) => keys[a]! - keys[b]!);
  const columns = columnsOf(keys.length, found);
  const self = new Float64Array(found);
  const finished = new Uint8Array(found);
  const sizes = new Uint32Array(keys.length);
  for (let i = 0; i < found; ++i) ++sizes[row[i]!]!;
  const next = new Uint32Array(keys.length);
  order.forEach((number, place) => {
    columns.lanes[place] = Math.floor(keys[number]! / 0x2_0000);
    columns.depths[place] = keys[number]! % 0x2_0000;
    columns.starts[place + 1] = columns.starts[place]! + sizes[number]!;
    next[number] = columns.starts[place]!;
  });
  for (let i = 0; i < found; ++i) {
    const at = next[row[i]!]!++;
    const from = start[i]!;
    columns.begin[at] = time[from]!;
    columns.end[at] = endTime[i]!;
    columns.event[at] = symbols.event[block.symbol[from]!]!;
    columns.flags[at] = flags[i]!;
    columns.record[at] = block.first + from;
    self[at] = selfOf[i]!;
    finished[at] = whole[i]!;
  }
  return { columns, self, finished };
}
