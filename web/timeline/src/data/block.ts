// A block of records, unpacked: src/scope/timeline/record_block.cpp has packed it.

import { ColumnReader, NumberReader } from './bytes';
import type { Room } from './room';
import type { Symbols } from './symbols';
import type { Words } from './texts';

const kNone = 0xffff_ffff;
const kPairs = 1 << 16;
const kMostInDictionary = 248;

const enum Coding {
  constant,
  value,
  delta,
  slope,
  afterTick,
  dictionary,
}

interface Segment {
  readonly index: number;
  readonly tickLow: number;
  readonly time: number;
  readonly divisor: number;
}

// Before the record at `index` so many calls are closed that is not the usual; kCloseAll: all of all
// threads, at `time`.
export interface Deed {
  readonly index: number;
  readonly closed: number;
  readonly time: number;
}
export const kCloseAll = kNone;

// Its arrays are the room's, until that is emptied.
export class RecordBlock {
  readonly count: number;
  readonly symbol: Uint32Array; // by record
  readonly time: Float64Array;
  readonly used: Uint32Array; // symbols of the block
  readonly depths: Uint32Array; // of their threads: calls open before the block
  readonly deeds: readonly Deed[];
  readonly failures: Uint32Array;

  private readonly firstSlot: number;
  private readonly gaps: readonly { index: number; slots: number }[];
  private readonly segments: readonly Segment[];
  private readonly local: Uint32Array;
  private readonly tickLow: Uint32Array;
  private readonly heading: NumberReader; // stands before the codings of words
  private columns: ColumnReader | null; // stands before the processors, then the words; null once all are read
  private cpu = new Uint32Array(0);
  private rank = new Uint32Array(0); // of a record among those of its symbol
  private halves: (Uint32Array | undefined)[] = []; // by local symbol * 8 + word * 2, + 1 high

  constructor(
    bytes: Uint8Array,
    readonly first: number, // number of its first record
    private readonly symbols: Symbols,
    private readonly room: Room,
  ) {
    const reader = new NumberReader(bytes);
    const heading = new NumberReader(reader.part(reader.next()));
    this.count = heading.next();
    this.firstSlot = heading.next();
    const used = heading.next();
    this.used = new Uint32Array(used);
    this.depths = new Uint32Array(used);
    for (let i = 0; i < used; ++i) {
      this.used[i] = heading.next();
      this.depths[i] = heading.next();
    }
    const list = <Entry>(read: (index: number) => Entry): Entry[] => {
      const entries: Entry[] = [];
      let index = 0;
      for (let left = heading.next(); left > 0; --left) {
        index += heading.next();
        entries.push(read(index));
      }
      return entries;
    };
    this.segments = list((index) => ({
      index,
      tickLow: heading.nextLow(),
      time: heading.nextSigned(),
      divisor: heading.next(),
    }));
    this.deeds = list((index) => {
      const closed = heading.next();
      return { index, closed, time: closed === kCloseAll ? heading.nextSigned() : 0 };
    });
    this.failures = Uint32Array.from(list((index) => index));
    this.gaps = list((index) => ({ index, slots: heading.next() }));
    this.heading = heading;

    const columns = new ColumnReader(reader);
    this.columns = columns;
    this.local = readSymbols(this.count, used, columns, room);
    this.symbol = room.words(this.count);
    for (let i = 0; i < this.count; ++i) this.symbol[i] = this.used[this.local[i]!]!;
    this.time = room.numbers(this.count);
    this.tickLow = room.words(this.count);
    this.readTimes(columns);
  }

  private readTimes(columns: ColumnReader): void {
    this.segments.forEach((segment, place) => {
      const end = this.segments[place + 1]?.index ?? this.count;
      const { tickLow, time, divisor } = segment;
      let tick = 0;
      for (let i = segment.index; i < end; ++i) {
        tick += columns.nextSigned();
        const whole = Math.floor(tick / divisor);
        this.time[i] = time + whole * 1000 + Math.floor(((tick - whole * divisor) * 1000) / divisor);
        this.tickLow[i] = tickLow + tick;
      }
    });
  }

  private readProcessors(): void {
    const { columns } = this;
    if (columns === null || this.cpu.length === this.count) return;
    this.cpu = this.room.words(this.count);
    const last = new Map<number, number>(); // by lane
    for (let i = 0; i < this.count; ++i) {
      const lane = this.symbols.lane[this.symbol[i]!]!;
      const difference = columns.nextDifference();
      const cpu = (last.get(lane) ?? 0) + difference;
      this.cpu[i] = cpu;
      if (difference !== 0) last.set(lane, this.cpu[i]!);
    }
  }

  private readWords(): void {
    this.readProcessors(); // they stand before the words
    const { columns } = this;
    if (columns === null) return;
    this.columns = null;
    // By symbol, its records' ticks in their order.
    const counts = new Uint32Array(this.used.length);
    this.rank = this.room.words(this.count);
    for (let i = 0; i < this.count; ++i) this.rank[i] = counts[this.local[i]!]!++;
    const ticks = Array.from(counts, (count) => this.room.words(count));
    for (let i = 0; i < this.count; ++i) ticks[this.local[i]!]![this.rank[i]!] = this.tickLow[i]!;
    this.used.forEach((symbol, local) => {
      for (let word = 0; word < 4; ++word) {
        if (((this.symbols.words[symbol]! >> word) & 1) === 0) continue;
        for (const half of [0, 1]) {
          this.halves[local * 8 + word * 2 + half] = this.readHalf(columns, ticks[local]!);
        }
      }
    });
  }

  // One value alone where all are the same.
  private readHalf(columns: ColumnReader, ticks: Uint32Array): Uint32Array {
    const coding = this.heading.nextByte() as Coding;
    if (coding === Coding.constant) return Uint32Array.of(this.heading.next());
    const values = this.room.words(ticks.length);
    if (coding === Coding.dictionary) {
      const dictionary = new Uint32Array(kMostInDictionary);
      const size = this.heading.next();
      for (let i = 0; i < size; ++i) dictionary[i] = this.heading.next();
      for (let i = 0; i < values.length; ++i) values[i] = dictionary[columns.next()]!;
      return values;
    }
    let before = 0;
    let step = 0;
    for (let i = 0; i < values.length; ++i) {
      let base = 0;
      if (coding === Coding.delta) base = before;
      if (coding === Coding.slope) base = before + step;
      if (coding === Coding.afterTick) base = ticks[i]! + before;
      const value = (base + columns.nextDifference()) >>> 0;
      values[i] = value;
      step = value - before;
      before = coding === Coding.afterTick ? value - ticks[i]! : value;
    }
    return values;
  }

  words(index: number, threadLow: number, threadHigh: number, into: Words): void {
    this.readWords();
    const at = this.local[index]! * 8;
    const rank = this.rank[index]!;
    for (let word = 0; word < 4; ++word) {
      const low = this.halves[at + word * 2];
      const high = this.halves[at + word * 2 + 1];
      into.low[word] = low === undefined ? 0 : low.length === 1 ? low[0]! : low[rank]!;
      into.high[word] = high === undefined ? 0 : high.length === 1 ? high[0]! : high[rank]!;
    }
    into.low[4] = threadLow;
    into.high[4] = threadHigh;
    into.ticksPerMicrosecond = this.segmentOf(index).divisor;
  }

  processor(index: number): number {
    this.readProcessors();
    return this.cpu[index]!;
  }

  slot(index: number): number {
    let slot = this.firstSlot + index;
    for (const gap of this.gaps) if (gap.index <= index) slot += gap.slots;
    return slot;
  }

  private segmentOf(index: number): Segment {
    let place = this.segments.length - 1;
    while (this.segments[place]!.index > index) --place;
    return this.segments[place]!;
  }
}

function readSymbols(count: number, used: number, columns: ColumnReader, room: Room): Uint32Array {
  const local = room.words(count);
  const afterOne = new Uint32Array(used + 1).fill(kNone);
  const afterTwo = room.words(kPairs).fill(kNone);
  let before = 0;
  let twoBefore = 0;
  for (let i = 0; i < count; ++i) {
    const pair = (Math.imul(twoBefore, 40503) + before) & (kPairs - 1);
    const number = columns.next();
    const symbol = number === 0 ? afterTwo[pair]! : number === 1 ? afterOne[before]! : number - 2;
    afterOne[before] = symbol;
    afterTwo[pair] = symbol;
    local[i] = symbol;
    twoBefore = before;
    before = symbol + 1;
  }
  return local;
}
