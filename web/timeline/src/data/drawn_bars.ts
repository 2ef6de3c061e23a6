// What a frame asks of calls and points: from the pyramid, or from unpacked blocks where it is finer
// than that.

import { grow } from '../columns';
import { kMerged, kThinned, type Bars, type Points } from '../trace';
import { buffersOf, emptyColumns, firstRowOf, joined, lowerBound, sizeOf, type BarColumns } from './bars';
import type { Head } from './head';
import type { Asked } from './protocol';
import { free } from './room';

const kRoom = 24 * 1024 * 1024; // bytes of unpacked blocks, unless a frame needs more

interface KeptBlock {
  readonly columns: BarColumns;
  readonly size: number;
  frame: number; // that asked for it last
}

export class DrawnBars {
  private readonly levels: (BarColumns | undefined)[];
  private longCalls: BarColumns | null = null;
  private noBlocks: BarColumns | null = null; // long calls, and what stands for calls that were thinned
  private readonly blocks = new Map<number, KeptBlock>();
  private readonly pending = new Set<string>();
  private size = 0;
  private frame = 0;

  // The sources of the latest question; what no block has comes first, or nothing.
  private readonly sources: BarColumns[] = [];
  private rows = new Int32Array(64);
  private from = NaN;
  private to = NaN;
  private nsPerPixel = NaN;
  private exact = false;

  constructor(
    private readonly head: Head,
    private readonly asked: Pick<Asked, 'bars' | 'level' | 'long'>,
    private readonly unpacked: () => void,
  ) {
    this.levels = new Array<BarColumns | undefined>(head.levels.length).fill(undefined);
    head.levels.forEach((_, level) => this.fetchLevel(level));
    this.fetch('long', async () => (this.longCalls = await asked.long()));
  }

  private fetch(name: string, get: () => Promise<unknown>): void {
    if (this.pending.has(name)) return;
    this.pending.add(name);
    void get().then(() => {
      this.pending.delete(name);
      this.from = NaN;
      this.unpacked();
    });
  }

  private fetchLevel(level: number): void {
    this.fetch(`level${level}`, async () => (this.levels[level] = await this.asked.level(level)));
  }

  private fetchBlock(block: number): void {
    this.fetch(`block${block}`, async () => {
      const columns = await this.asked.bars(block);
      const size = sizeOf(columns);
      this.blocks.set(block, { columns, size, frame: this.frame });
      this.size += size;
      this.forget();
    });
  }

  // What the last frames have not asked for goes first.
  private forget(): void {
    if (this.size <= kRoom) return;
    const oldest = [...this.blocks].sort(([, a], [, b]) => a.frame - b.frame);
    for (const [number, block] of oldest) {
      if (this.size <= kRoom || block.frame >= this.frame - 1) break;
      this.blocks.delete(number);
      free(buffersOf(block.columns));
      this.size -= block.size;
    }
  }

  // Finds the sources for a view: the same for all of its lanes.
  private select(from: number, to: number, nsPerPixel: number): void {
    if (from === this.from && to === this.to && nsPerPixel === this.nsPerPixel) return;
    this.from = from;
    this.to = to;
    this.nsPerPixel = nsPerPixel;
    ++this.frame;
    const { levels: resolutions } = this.head;
    let level = resolutions.findIndex((resolution) => resolution <= nsPerPixel);
    this.exact = true;
    if (level < 0) {
      if (this.selectBlocks(from, to)) return;
      this.exact = false;
      level = resolutions.length - 1;
    }
    this.sources.length = 0;
    this.sources.push(emptyColumns());
    for (; level >= 0; --level) {
      const columns = this.levels[level];
      if (columns !== undefined) {
        this.sources.push(columns);
        return;
      }
      this.exact = false;
    }
  }

  private selectBlocks(from: number, to: number): boolean {
    const { blocks } = this.head;
    this.sources.length = 0;
    const finest = this.levels.at(-1);
    if (this.noBlocks === null && this.longCalls !== null && finest !== undefined) {
      this.noBlocks = joined(this.longCalls, finest, kThinned);
    }
    this.sources.push(this.noBlocks ?? emptyColumns());
    let all = this.noBlocks !== null;
    for (let block = 0; block * 3 < blocks.length; ++block) {
      if (blocks[block * 3 + 1]! >= to || blocks[block * 3 + 2]! < from) continue;
      const kept = this.blocks.get(block);
      if (kept === undefined) {
        all = false;
        this.fetchBlock(block);
      } else {
        kept.frame = this.frame;
        this.sources.push(kept.columns);
      }
    }
    return all;
  }

  // `parity` is 0 for calls, 1 for points.
  fill(
    lane: number,
    from: number,
    to: number,
    nsPerPixel: number,
    parity: number,
    into: Bars | Points,
  ): boolean {
    this.select(from, to, nsPerPixel);
    const { sources } = this;
    if (this.rows.length < sources.length) this.rows = new Int32Array(2 * sources.length);
    const { rows } = this;
    for (let i = 0; i < sources.length; ++i) rows[i] = firstRowOf(sources[i]!, lane);
    into.count = 0;
    for (;;) {
      let depth = Infinity;
      for (let i = 0; i < sources.length; ++i) {
        const source = sources[i]!;
        while (source.lanes[rows[i]!] === lane && (source.depths[rows[i]!]! & 1) !== parity) ++rows[i]!;
        if (source.lanes[rows[i]!] !== lane) continue;
        if (source.depths[rows[i]!]! < depth) depth = source.depths[rows[i]!]!;
      }
      if (depth === Infinity) return this.exact;
      this.fillRow(lane, depth, from, to, nsPerPixel, into);
    }
  }

  // What no block has and the calls of each block, merged in the order of time.
  private fillRow(
    lane: number,
    depth: number,
    from: number,
    to: number,
    nsPerPixel: number,
    into: Bars | Points,
  ): void {
    const { sources, rows } = this;
    const long = sources[0]!;
    let next = 0;
    let last = 0;
    this.cell = NaN;
    for (let i = 0; i < sources.length; ++i) {
      const source = sources[i]!;
      const row = rows[i]!;
      if (source.lanes[row] !== lane || source.depths[row] !== depth) continue;
      ++rows[i]!;
      const end = source.starts[row + 1]!;
      let at = lowerBound(source.end, source.starts[row]!, end, from);
      if (i === 0) {
        next = at;
        last = end;
        continue;
      }
      for (; at < end && source.begin[at]! < to; ++at) {
        for (; next < last && long.begin[next]! <= source.begin[at]!; ++next) {
          this.put(long, next, depth, nsPerPixel, into);
        }
        this.put(source, at, depth, nsPerPixel, into);
      }
    }
    for (; next < last && long.begin[next]! < to; ++next) this.put(long, next, depth, nsPerPixel, into);
  }

  private cell = NaN; // of the latest bar, if it was short
  private longest = 0;

  private put(from: BarColumns, at: number, depth: number, nsPerPixel: number, into: Bars | Points): void {
    const begin = from.begin[at]!;
    const end = from.end[at]!;
    const isShort = end - begin < nsPerPixel;
    const cell = isShort ? Math.floor(begin / nsPerPixel) : NaN;
    if (cell === this.cell) {
      const merged = into.count - 1;
      into.flags[merged]! |= from.flags[at]! | kMerged;
      if ('end' in into && end > into.end[merged]!) into.end[merged] = end;
      if (end - begin > this.longest) {
        this.longest = end - begin;
        into.event[merged] = from.event[at]!;
        into.record[merged] = from.record[at]!;
      }
      return;
    }
    this.cell = cell;
    this.longest = end - begin;
    if (into.count === into.depth.length) grow(into);
    const place = into.count++;
    if ('end' in into) {
      into.begin[place] = begin;
      into.end[place] = end;
    } else {
      into.time[place] = begin;
    }
    into.depth[place] = depth >> 1;
    into.event[place] = from.event[at]!;
    into.flags[place] = from.flags[at]!;
    into.record[place] = from.record[at]!;
  }
}
