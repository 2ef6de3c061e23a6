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

export interface CycleLevel {
  readonly resolution: number;
  readonly columns: CycleColumns;
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
function merged(cycles: CycleColumns, resolution: number): CycleColumns {
  const into = cyclesOf(cycles.begin.length);
  let count = 0;
  let cell = NaN;
  let worst = 0;
  for (let i = 0; i < cycles.begin.length; ++i) {
    const at = Math.floor(cycles.begin[i]! / resolution);
    const isShort = cycles.end[i]! - cycles.begin[i]! < resolution;
    if (isShort && at === cell) {
      into.dropout[count - 1]! |= cycles.dropout[i]!;
      const late = lateness(cycles, i);
      if (late <= worst) continue;
      worst = late;
    } else {
      cell = isShort ? at : NaN;
      worst = lateness(cycles, i);
      into.dropout[count] = cycles.dropout[i]!;
      ++count;
    }
    into.begin[count - 1] = cycles.begin[i]!;
    into.end[count - 1] = cycles.end[i]!;
    into.due[count - 1] = cycles.due[i]!;
    into.budget[count - 1] = cycles.budget[i]!;
    into.record[count - 1] = cycles.record[i]!;
  }
  return {
    begin: into.begin.slice(0, count),
    end: into.end.slice(0, count),
    due: into.due.slice(0, count),
    budget: into.budget.slice(0, count),
    dropout: into.dropout.slice(0, count),
    record: into.record.slice(0, count),
  };
}

// The finest level first: the cycles themselves.
export function levelsOf(cycles: CycleColumns): CycleLevel[] {
  const levels: CycleLevel[] = [{ resolution: 0, columns: cycles }];
  const count = cycles.begin.length;
  if (count === 0) return levels;
  const span = cycles.end[count - 1]! - cycles.begin[0]!;
  let resolution = Math.max(1, (kStep * span) / count);
  for (let last = cycles; last.begin.length > kFewest; resolution *= kStep) {
    const next = merged(last, resolution);
    if (next.begin.length === last.begin.length && resolution > span) break;
    levels.push({ resolution, columns: next });
    last = next;
  }
  return levels;
}

export function fillCycles(
  levels: readonly CycleLevel[],
  from: number,
  to: number,
  nsPerPixel: number,
  into: Cycles,
): void {
  into.count = 0;
  let level = 0;
  while (level + 1 < levels.length && levels[level + 1]!.resolution <= nsPerPixel) ++level;
  const { begin, end, due, budget, dropout, record } = levels[level]!.columns;
  for (let i = lowerBound(end, 0, end.length, from); i < begin.length && begin[i]! < to; ++i) {
    if (into.count === into.begin.length) grow(into);
    const at = into.count++;
    into.begin[at] = begin[i]!;
    into.end[at] = end[i]!;
    into.due[at] = due[i]!;
    into.budget[at] = budget[i]!;
    into.dropout[at] = dropout[i]!;
    into.record[at] = record[i]!;
  }
}
