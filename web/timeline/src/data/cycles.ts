// Cycles of the I/O threads, and the same merged for wider views.

import { grow } from '../columns';
import type { Cycles } from '../trace';
import { lowerBound } from './bars';
import { ColumnReader, NumberReader } from './bytes';

export interface CycleColumns {
  readonly begin: Float64Array;
  readonly end: Float64Array;
  readonly due: Float64Array;
  readonly budget: Float64Array;
  readonly dropout: Uint8Array;
  readonly record: Float64Array;
}

// Cycles of a lane, merged where they are shorter than the resolution.
export interface CycleLevel {
  readonly resolution: number;
  readonly places: Uint32Array; // of the cycles that stand for all
  readonly dropout: Uint8Array; // of any that they stand for
}

export interface CycleLevels {
  readonly cycles: CycleColumns;
  readonly coarser: readonly CycleLevel[]; // the finest first
}

export function buffersOfCycles({ cycles, coarser }: CycleLevels): ArrayBuffer[] {
  const columns = [cycles, ...coarser].flatMap((level) => Object.values(level) as unknown[]);
  return columns.filter(ArrayBuffer.isView).map(({ buffer }) => buffer as ArrayBuffer);
}

const kStep = 4;
const kFewest = 512; // of a level that has a coarser one

function cyclesOf(count: number): CycleColumns {
  return {
    begin: new Float64Array(count),
    end: new Float64Array(count),
    due: new Float64Array(count),
    budget: new Float64Array(count),
    dropout: new Uint8Array(count),
    record: new Float64Array(count),
  };
}

// By thread number.
export function readCycles(bytes: Uint8Array): Map<number, CycleColumns> {
  const reader = new NumberReader(bytes);
  const heading = new NumberReader(reader.part(reader.next()));
  const columns = new ColumnReader(reader);
  const threads = new Map<number, CycleColumns>();
  for (let left = heading.next(); left > 0; --left) {
    const thread = heading.next();
    const count = heading.next();
    const cycles = cyclesOf(count);
    const { begin, end, due, budget, dropout, record } = cycles;
    for (let i = 0, at = 0; i < count; ++i) begin[i] = at += columns.nextSigned();
    for (let i = 0; i < count; ++i) end[i] = begin[i]! + columns.nextSigned();
    for (let i = 0; i < count; ++i) {
      const known = columns.next();
      const late = known - 1;
      due[i] = known === 0 ? NaN : begin[i]! + (late % 2 === 0 ? late / 2 : -(late + 1) / 2);
    }
    for (let i = 0, at = 0; i < count; ++i) budget[i] = at += columns.nextSigned();
    for (let i = 0; i < count; ++i) dropout[i] = columns.next();
    for (let i = 0, at = 0; i < count; ++i) record[i] = at += columns.next();
    threads.set(thread, cycles);
  }
  return threads;
}

// How much later than its deadline a cycle ended.
function lateness(cycles: CycleColumns, at: number): number {
  const late = cycles.end[at]! - cycles.due[at]! - cycles.budget[at]!;
  return Number.isNaN(late) ? -Infinity : late;
}

// Of the cycles that begin in one cell the latest, with a dropout where one of them has it.
function merged(cycles: CycleColumns, finer: CycleLevel, resolution: number): CycleLevel {
  const places = new Uint32Array(finer.places.length);
  const dropout = new Uint8Array(finer.places.length);
  let count = 0;
  let cell = NaN;
  let worst = 0;
  finer.places.forEach((place, i) => {
    const isShort = cycles.end[place]! - cycles.begin[place]! < resolution;
    const at = Math.floor(cycles.begin[place]! / resolution);
    const late = lateness(cycles, place);
    if (isShort && at === cell) {
      dropout[count - 1]! |= finer.dropout[i]!;
      if (late <= worst) return;
    } else {
      cell = isShort ? at : NaN;
      dropout[count] = finer.dropout[i]!;
      ++count;
    }
    worst = late;
    places[count - 1] = place;
  });
  return { resolution, places: places.slice(0, count), dropout: dropout.slice(0, count) };
}

export function levelsOf(cycles: CycleColumns): CycleLevels {
  const count = cycles.begin.length;
  const coarser: CycleLevel[] = [];
  const all = new Uint32Array(count);
  for (let i = 0; i < count; ++i) all[i] = i;
  let last: CycleLevel = { resolution: 0, places: all, dropout: cycles.dropout };
  const span = count === 0 ? 0 : cycles.end[count - 1]! - cycles.begin[0]!;
  let resolution = Math.max(1, (kStep * span) / count);
  for (; last.places.length > kFewest; resolution *= kStep) {
    const next = merged(cycles, last, resolution);
    if (next.places.length === last.places.length && resolution > span) break;
    coarser.push(next);
    last = next;
  }
  return { cycles, coarser };
}

// The first of a level's cycles that does not end before a time.
function firstIn({ end }: CycleColumns, places: Uint32Array | null, from: number): number {
  if (places === null) return lowerBound(end, 0, end.length, from);
  let low = 0;
  let high = places.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (end[places[middle]!]! < from) low = middle + 1;
    else high = middle;
  }
  return low;
}

export function fillCycles(
  levels: CycleLevels,
  from: number,
  to: number,
  nsPerPixel: number,
  into: Cycles,
): void {
  const { begin, end, due, budget, dropout, record } = levels.cycles;
  const level = levels.coarser.findLast(({ resolution }) => resolution <= nsPerPixel);
  const places = level?.places ?? null;
  const count = places?.length ?? begin.length;
  into.count = 0;
  for (let i = firstIn(levels.cycles, places, from); i < count; ++i) {
    const place = places?.[i] ?? i;
    if (begin[place]! >= to) return;
    if (into.count === into.begin.length) grow(into);
    const at = into.count++;
    into.begin[at] = begin[place]!;
    into.end[at] = end[place]!;
    into.due[at] = due[place]!;
    into.budget[at] = budget[place]!;
    into.dropout[at] = (level?.dropout ?? dropout)[i]!;
    into.record[at] = record[place]!;
  }
}
