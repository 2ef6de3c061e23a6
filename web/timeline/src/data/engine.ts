// All that is asked of a page's data but drawing: it runs in a worker, and in tests beside them.

import type { Matches, RecordDetail, Selection, StatisticsRow } from '../trace';
import { kCutOff, kFailure } from '../trace';
import { BarRows, readLevel, readLongCalls, lowerBound, type BarColumns, type LongCalls } from './bars';
import { RecordBlock } from './block';
import { inflated, inflatedPieces, wholeOf } from './bytes';
import { callsOf, replay, type BlockCalls } from './calls';
import { levelsOf, readCycles, type CycleLevels } from './cycles';
import { lanesOfThreads, type Head } from './head';
import { addProcessorCalls, coarserLevels } from './processors';
import { Room } from './room';
import { verdictOf, wordsOf, type Verdict } from './search';
import { symbolsOf, type Symbols } from './symbols';
import { lineOf, nameOf, newWords, textOf, valueText } from './texts';
import { wordText } from './words';

// Numbers that become more and more.
class Numbers {
  private values = new Float64Array(1024);
  count = 0;

  add(value: number): void {
    if (this.count === this.values.length) {
      const more = new Float64Array(this.count * 2);
      more.set(this.values);
      this.values = more;
    }
    this.values[this.count++] = value;
  }

  taken(): Float64Array<ArrayBuffer> {
    return this.values.slice(0, this.count);
  }
}

// Matches in the order of time, however they were found.
function inOrder(times: Numbers, records: Numbers, complete: boolean): Matches {
  const time = times.taken();
  const record = records.taken();
  let isSorted = true;
  for (let i = 1; i < time.length && isSorted; ++i) isSorted = time[i - 1]! <= time[i]!;
  if (isSorted) return { time, record, complete };
  const order = Uint32Array.from(time.keys()).sort((a, b) => time[a]! - time[b]! || a - b);
  return {
    time: Float64Array.from(order, (at) => time[at]!),
    record: Float64Array.from(order, (at) => record[at]!),
    complete,
  };
}

interface Unpacked {
  readonly number: number;
  readonly block: RecordBlock;
  calls: BlockCalls | null;
}

interface Tally {
  calls: number;
  failures: number;
  total: number;
  self: number;
  max: number;
  longest: number;
  readonly lengths: Numbers;
}

export class Engine {
  private readonly chunks = new Map<string, Uint8Array<ArrayBuffer>>();
  private readonly awaited = new Map<string, (() => void)[]>();
  private readonly room = new Room(); // of the latest block
  private latest: Unpacked | null = null;
  private readonly symbols: Symbols;
  private readonly laneOfThread: Uint32Array;
  private longCalls: Promise<LongCalls> | null = null;
  private processorLevels: Promise<BarColumns[]> | null = null;

  constructor(private readonly head: Head) {
    this.symbols = symbolsOf(head);
    this.laneOfThread = lanesOfThreads(head);
  }

  // Chunks come as the page is read.
  addChunk(id: string, bytes: Uint8Array<ArrayBuffer>): void {
    this.chunks.set(id, bytes);
    for (const settle of this.awaited.get(id) ?? []) settle();
    this.awaited.delete(id);
  }

  private async chunk(id: string): Promise<Uint8Array<ArrayBuffer>> {
    if (!this.chunks.has(id)) {
      await new Promise<void>((settle) => {
        this.awaited.set(id, [...(this.awaited.get(id) ?? []), settle]);
      });
    }
    return this.chunks.get(id)!;
  }

  private get blockCount(): number {
    return this.head.blocks.length / 3;
  }

  // Does something with a block, at once: the next block takes its room.
  private async inBlock<Result>(number: number, act: (unpacked: Unpacked) => Result): Promise<Result> {
    if (this.latest?.number === number) return act(this.latest);
    const pieces = await inflatedPieces(await this.chunk(`block${number}`));
    this.latest = null;
    this.room.empty();
    const first = this.head.blocks[number * 3]!;
    const block = new RecordBlock(wholeOf(pieces, this.room), first, this.symbols, this.room);
    this.latest = { number, block, calls: null };
    return act(this.latest);
  }

  private callsOf(unpacked: Unpacked): BlockCalls {
    unpacked.calls ??= callsOf(unpacked.block, this.symbols, this.head.lanes.length);
    return unpacked.calls;
  }

  // To be given away.
  async bars(number: number): Promise<BarColumns> {
    return this.inBlock(number, (unpacked) => {
      const { columns } = this.callsOf(unpacked);
      unpacked.calls = null;
      return columns;
    });
  }

  async level(number: number): Promise<BarColumns> {
    return readLevel(await inflated(await this.chunk(`level${number}`)), this.laneOfThread);
  }

  async long(): Promise<LongCalls> {
    this.longCalls ??= this.chunk('long')
      .then(inflated)
      .then((bytes) => readLongCalls(bytes, this.laneOfThread));
    return this.longCalls;
  }

  async processorBars(number: number): Promise<BarColumns> {
    const rows = new BarRows(0);
    await this.addProcessors(number, rows);
    return rows.columns();
  }

  // The first one asked for takes a walk through all blocks.
  async processorLevel(number: number): Promise<BarColumns> {
    this.processorLevels ??= this.makeProcessorLevels();
    return structuredClone((await this.processorLevels)[number]!);
  }

  private async makeProcessorLevels(): Promise<BarColumns[]> {
    const { levels } = this.head;
    const rows = new BarRows(levels[levels.length - 1]!);
    for (let number = 0; number < this.blockCount; ++number) await this.addProcessors(number, rows);
    return coarserLevels(rows.columns(), levels);
  }

  private async addProcessors(number: number, rows: BarRows): Promise<void> {
    const { lanes, processors } = this.head;
    const long = await this.long();
    await this.inBlock(number, ({ block }) =>
      addProcessorCalls(block, this.symbols, lanes.length, long, processors, rows),
    );
  }

  // By lane.
  async cycles(): Promise<Map<number, CycleLevels>> {
    const threads = readCycles(await inflated(await this.chunk('cycles')));
    return new Map([...threads].map(([thread, cycles]) => [this.laneOfThread[thread]!, levelsOf(cycles)]));
  }

  // Goes through all blocks once.
  async failures(): Promise<Matches> {
    const times = new Numbers();
    const records = new Numbers();
    for (let number = 0; number < this.blockCount; ++number) {
      await this.inBlock(number, ({ block }) => {
        for (const index of block.failures) {
          times.add(block.time[index]!);
          records.add(block.first + index);
        }
      });
    }
    return inOrder(times, records, true);
  }

  async search(text: string, found: (matches: Matches) => void, stop: AbortSignal): Promise<void> {
    const words = wordsOf(text);
    const times = new Numbers();
    const records = new Numbers();
    if (words.length === 0) {
      found(inOrder(times, records, true));
      return;
    }
    const verdicts = this.head.kinds.map((kind) => verdictOf(kind, words));
    const into = newWords();
    let told = Date.now();
    for (let number = 0; number < this.blockCount && !stop.aborted; ++number) {
      await this.inBlock(number, ({ block }) => {
        const decided: (Verdict | undefined)[] = [];
        for (const symbol of block.used) decided[symbol] = verdicts[this.symbols.kind[symbol]!]!;
        if (decided.every((verdict) => verdict === 'none')) return;
        for (let index = 0; index < block.count; ++index) {
          const symbol = block.symbol[index]!;
          const verdict = decided[symbol]!;
          if (verdict === 'none') continue;
          if (verdict !== 'all') {
            this.readWords(block, index, into);
            const line = lineOf(this.head.kinds[this.symbols.kind[symbol]!]!, into).toLowerCase();
            if (!verdict.every((word) => line.includes(word))) continue;
          }
          times.add(block.time[index]!);
          records.add(block.first + index);
        }
      });
      if (Date.now() - told > 100 && !stop.aborted) {
        told = Date.now();
        found(inOrder(times, records, false));
      }
    }
    if (!stop.aborted) found(inOrder(times, records, true));
  }

  private readWords(block: RecordBlock, index: number, into: ReturnType<typeof newWords>): void {
    const id = this.head.lanes[this.symbols.lane[block.symbol[index]!]!]!.id;
    block.words(index, parseInt(id.slice(10), 16), parseInt(id.slice(2, 10), 16), into);
  }

  // A call counts where its start or its end is in the selection.
  async statistics(selection: Selection): Promise<StatisticsRow[]> {
    const { from, to, lanes } = selection;
    const asked = lanes === null ? null : new Set(lanes);
    const toEnd = to >= this.head.end;
    const isIn = (time: number): boolean => time >= from && (time < to || toEnd);
    const tallies = new Map<number, Tally>();
    const tallyOf = (event: number): Tally => {
      let tally = tallies.get(event);
      if (tally === undefined) {
        tally = { calls: 0, failures: 0, total: 0, self: 0, max: -1, longest: -1, lengths: new Numbers() };
        tallies.set(event, tally);
      }
      return tally;
    };
    const count = (columns: BarColumns, self: Float64Array, isFinished: (at: number) => boolean): void => {
      for (let row = 0; row < columns.lanes.length; ++row) {
        if (columns.depths[row]! % 2 === 1 || asked?.has(columns.lanes[row]!) === false) continue;
        for (let at = columns.starts[row]!; at < columns.starts[row + 1]!; ++at) {
          const finished = isFinished(at);
          const begin = columns.begin[at]!;
          const end = columns.end[at]!;
          if (!isIn(begin) && !(finished && isIn(end))) continue;
          const tally = tallyOf(columns.event[at]!);
          ++tally.calls;
          if (!finished) continue;
          const length = end - begin;
          tally.total += length;
          tally.self += self[at]!;
          tally.lengths.add(length);
          if (length <= tally.max) continue;
          tally.max = length;
          tally.longest = columns.record[at]!;
        }
      }
    };
    const long = await this.long();
    count(long, long.self, (at) => (long.flags[at]! & (kCutOff | 4)) === 0);
    for (let number = 0; number < this.blockCount; ++number) {
      const [, least, latest] = this.head.blocks.slice(number * 3, number * 3 + 3);
      if (latest! < from || (least! >= to && !toEnd)) continue;
      await this.inBlock(number, (unpacked) => {
        const { block } = unpacked;
        const calls = this.callsOf(unpacked);
        count(calls.columns, calls.self, (at) => calls.finished[at] === 1);
        for (const index of block.failures) {
          const symbol = block.symbol[index]!;
          if (!isIn(block.time[index]!) || asked?.has(this.symbols.lane[symbol]!) === false) continue;
          ++tallyOf(this.symbols.event[symbol]!).failures;
        }
      });
    }
    const rows = [...tallies].map(([event, tally]) => {
      const lengths = tally.lengths.taken().sort();
      return {
        event,
        calls: tally.calls,
        failures: tally.failures,
        total: tally.total,
        self: tally.self,
        median: lengths.length === 0 ? 0 : lengths[Math.ceil(lengths.length / 2) - 1]!,
        max: Math.max(0, tally.max),
        longest: tally.longest,
      };
    });
    return rows.sort((a, b) => b.total - a.total || a.event - b.event);
  }

  private blockOf(record: number): number {
    let low = 0;
    let high = this.blockCount - 1;
    while (low < high) {
      const middle = (low + high + 1) >>> 1;
      if (this.head.blocks[middle * 3]! <= record) low = middle;
      else high = middle - 1;
    }
    return low;
  }

  async detail(record: number): Promise<RecordDetail> {
    const long = await this.long();
    return this.inBlock(this.blockOf(record), (unpacked) => this.detailIn(unpacked, record, long));
  }

  private detailIn(unpacked: Unpacked, record: number, long: LongCalls): RecordDetail {
    const { block } = unpacked;
    const calls = this.callsOf(unpacked);
    const index = record - block.first;
    const symbol = block.symbol[index]!;
    const lane = this.symbols.lane[symbol]!;
    const kind = this.head.kinds[this.symbols.kind[symbol]!]!;
    const words = newWords();
    this.readWords(block, index, words);

    // What is open on the thread after the record before, and which call the record belongs to.
    const open: number[] = [];
    let closes = -1;
    let orphan = false;
    replay(block, this.symbols, this.head.lanes.length, index + 1, {
      open: (at, of) => {
        if (of === lane && at !== index) open.push(at);
      },
      close: (start, of, by, _, finished) => {
        if (of !== lane) return;
        open.pop();
        if (by === index && finished) closes = start;
      },
      point: (at, _, __, isOrphan) => {
        if (at === index) orphan = isOrphan;
      },
    });
    const parents = open.map((at) => block.first + at).reverse();
    let own = closes >= 0 ? block.first + closes : kind.qualifier === 1 && !kind.point ? record : -1;
    const around: number[] = [];
    for (let row = 0; row < long.lanes.length; ++row) {
      if (long.lanes[row] !== lane || long.depths[row]! % 2 === 1) continue;
      const end = long.starts[row + 1]!;
      const before = lowerBound(long.record, long.starts[row]!, end, record + 1) - 1;
      if (before < long.starts[row]!) continue;
      const start = long.record[before]!;
      const ends = long.endRecord[before]!;
      if (ends === record && kind.qualifier === 2 && (long.flags[before]! & kCutOff) === 0) own = start;
      else if (start < block.first && ends > record) around.push(start);
    }
    parents.push(...around.reverse());

    const isFailure = block.failures.includes(index);
    const find = (columns: BarColumns, self: Float64Array): RecordDetail['call'] => {
      for (let row = 0; row < columns.lanes.length; ++row) {
        if (columns.lanes[row] !== lane || columns.depths[row]! % 2 === 1) continue;
        const end = columns.starts[row + 1]!;
        const at = lowerBound(columns.record, columns.starts[row]!, end, own);
        if (at < end && columns.record[at] === own) {
          flags |= columns.flags[at]! & ~kFailure;
          return { begin: columns.begin[at]!, end: columns.end[at]!, self: self[at]! };
        }
      }
      return null;
    };
    let flags = (isFailure ? kFailure : 0) | (orphan ? kCutOff : 0);
    const call = own < 0 ? null : (find(calls.columns, calls.self) ?? find(long, long.self));
    const pieces = (kind.text?.pieces ?? []).filter((piece) => piece.slice !== undefined);
    const text = textOf(kind, words);
    return {
      record,
      slot: block.slot(index),
      time: block.time[index]!,
      lane,
      processor: block.processor(index),
      event: kind.event,
      qualifier: kind.qualifier,
      object: kind.object ? wordText(words.low[0]!, words.high[0]!) : '',
      line: text === '' ? nameOf(kind) : `${nameOf(kind)} ${text}`,
      values: pieces.map((piece) => ({ name: piece.name!, text: valueText(piece, words) })),
      flags,
      call,
      parents,
    };
  }
}
