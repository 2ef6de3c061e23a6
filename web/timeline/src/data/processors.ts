// What ran on each processor: the calls of the thread whose record was the latest there, until a
// record of another thread on that processor, or of that thread on another one.

import { kWaiting } from '../trace';
import { BarRows, lowerBound, type BarColumns, type LongCalls } from './bars';
import type { RecordBlock } from './block';
import { replay } from './calls';
import type { Symbols } from './symbols';

export const kProcessorRows = 6; // calls deeper inside others are left out

interface OpenCall {
  readonly record: number;
  readonly event: number;
  readonly flags: number;
}

interface Running extends OpenCall {
  readonly begin: number;
}

interface Processor {
  lane: number; // of the thread, -1: none
  readonly running: Running[]; // the outermost first
}

// The calls of a lane that were open before a block, the outermost first: places among the long ones.
function openBefore(long: LongCalls, lane: number, first: number): number[] {
  const places: number[] = [];
  for (let row = 0; row < long.lanes.length; ++row) {
    if (long.lanes[row] !== lane || long.depths[row]! % 2 === 1) continue;
    const begin = long.starts[row]!;
    const place = lowerBound(long.record, begin, long.starts[row + 1]!, first) - 1;
    if (place >= begin && long.endRecord[place]! >= first) places.push(place);
  }
  return places;
}

// Adds a block's to `rows`, whose lanes are places in `numbers`, the processors' numbers.
export function addProcessorCalls(
  block: RecordBlock,
  symbols: Symbols,
  lanes: number,
  long: LongCalls,
  numbers: readonly number[],
  rows: BarRows,
): void {
  const placeOf = new Map(numbers.map((number, place) => [number, place]));
  const processors = numbers.map((): Processor => ({ lane: -1, running: [] }));
  const whereIs = new Int32Array(lanes).fill(-1); // the processor of a lane's latest record
  const before = new Map<number, number[]>(); // open since before the block, by lane
  const open = new Map<number, OpenCall[]>();

  const callsOf = (lane: number, record: number): OpenCall[] => {
    let outer = before.get(lane);
    if (outer === undefined) before.set(lane, (outer = openBefore(long, lane, block.first)));
    while (outer.length > 0 && long.endRecord[outer[outer.length - 1]!]! <= record) outer.pop();
    const inner = open.get(lane) ?? [];
    if (outer.length === 0) return inner;
    const calls = outer.slice(0, kProcessorRows).map((place) => ({
      record: long.record[place]!,
      event: long.event[place]!,
      flags: long.flags[place]! & kWaiting,
    }));
    return [...calls, ...inner.slice(0, kProcessorRows)];
  };
  const leave = (place: number, kept: number, time: number): void => {
    const { running } = processors[place]!;
    while (running.length > kept) {
      const { begin, event, flags, record } = running.pop()!;
      rows.add(place, 2 * running.length, begin, Math.max(begin, time), event, flags, record);
    }
  };

  replay(block, symbols, lanes, block.count, {
    open(index, lane) {
      const symbol = block.symbol[index]!;
      const flags = symbols.waits[symbol] === 1 ? kWaiting : 0;
      const call = { record: block.first + index, event: symbols.event[symbol]!, flags };
      const calls = open.get(lane);
      if (calls === undefined) open.set(lane, [call]);
      else calls.push(call);
    },
    close(_, lane) {
      open.get(lane)!.pop();
    },
    point() {},
    after(index, lane) {
      const time = block.time[index]!;
      const place = placeOf.get(block.processor(index)) ?? numbers.length - 1;
      const last = whereIs[lane]!;
      if (last >= 0 && last !== place && processors[last]!.lane === lane) leave(last, 0, time);
      whereIs[lane] = place;
      const processor = processors[place]!;
      const calls = callsOf(lane, block.first + index);
      let same = 0;
      while (same < calls.length && calls[same]!.record === processor.running[same]?.record) ++same;
      leave(place, same, time);
      processor.lane = lane;
      for (const call of calls.slice(same, kProcessorRows)) {
        processor.running.push({ ...call, begin: time });
      }
    },
  });
  const end = block.time[block.count - 1] ?? 0;
  numbers.forEach((_, place) => leave(place, 0, end));
}

// The same for views of lower resolution, made from the finest level; the coarsest first.
export function coarserLevels(finest: BarColumns, resolutions: readonly number[]): BarColumns[] {
  const levels = [finest];
  for (const resolution of resolutions.slice(0, -1).reverse()) {
    const rows = new BarRows(resolution);
    rows.addAll(levels[0]!);
    levels.unshift(rows.columns());
  }
  return levels;
}
