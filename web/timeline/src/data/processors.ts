// What ran on each processor: the calls of the thread whose record was the latest there, until a
// record of another thread on that processor, or of that thread on another one.

import { kWaiting } from '../trace';
import { BarRows, lowerBound, type BarColumns, type LongCalls } from './bars';
import type { RecordBlock } from './block';
import { replay } from './calls';
import type { Symbols } from './symbols';

export const kProcessorRows = 6; // calls deeper inside others are left out

// A call is its start's index in the block, or -1 - place where it is one of several blocks.
interface Processor {
  lane: number; // of the thread, -1: none
  readonly running: number[]; // calls, the outermost first
  readonly since: number[];
}

// The calls of a lane that were open before a block, the outermost first.
function openBefore(long: LongCalls, lane: number, first: number): number[] {
  const calls: number[] = [];
  for (let row = 0; row < long.lanes.length; ++row) {
    if (long.lanes[row] !== lane || long.depths[row]! % 2 === 1) continue;
    const begin = long.starts[row]!;
    const place = lowerBound(long.record, begin, long.starts[row + 1]!, first) - 1;
    if (place >= begin && long.endRecord[place]! >= first) calls.push(-1 - place);
  }
  return calls;
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
  const placeOf = new Uint32Array(numbers[numbers.length - 1]! + 1);
  numbers.forEach((number, place) => (placeOf[number] = place));
  const processors = numbers.map((): Processor => ({ lane: -1, running: [], since: [] }));
  const whereIs = new Int32Array(lanes).fill(-1); // the processor of a lane's latest record
  const outer = Array.from({ length: lanes }, (_, lane) => openBefore(long, lane, block.first));
  const inner = Array.from({ length: lanes }, (): number[] => []);

  const leave = (place: number, kept: number, time: number): void => {
    const { running, since } = processors[place]!;
    while (running.length > kept) {
      const call = running.pop()!;
      const begin = since.pop()!;
      const end = Math.max(begin, time);
      const depth = 2 * running.length;
      if (call < 0) {
        const at = -1 - call;
        rows.add(place, depth, begin, end, long.event[at]!, long.flags[at]! & kWaiting, long.record[at]!);
      } else {
        const symbol = block.symbol[call]!;
        const flags = symbols.waits[symbol] === 1 ? kWaiting : 0;
        rows.add(place, depth, begin, end, symbols.event[symbol]!, flags, block.first + call);
      }
    }
  };

  replay(block, symbols, lanes, block.count, {
    open(index, lane) {
      inner[lane]!.push(index);
    },
    close(_, lane) {
      inner[lane]!.pop();
    },
    point() {},
    after(index, lane) {
      const time = block.time[index]!;
      const place = placeOf[block.processor(index)] ?? numbers.length - 1;
      const last = whereIs[lane]!;
      if (last >= 0 && last !== place && processors[last]!.lane === lane) leave(last, 0, time);
      whereIs[lane] = place;
      const around = outer[lane]!;
      const inside = inner[lane]!;
      while (around.length > 0 && long.endRecord[-1 - around[around.length - 1]!]! <= block.first + index) around.pop();
      const depth = Math.min(kProcessorRows, around.length + inside.length);
      const callAt = (at: number): number => (at < around.length ? around[at]! : inside[at - around.length]!);
      const processor = processors[place]!;
      const { running, since } = processor;
      let same = 0;
      while (same < depth && running[same] === callAt(same)) ++same;
      leave(place, same, time);
      processor.lane = lane;
      for (; same < depth; ++same) {
        running.push(callAt(same));
        since.push(time);
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
