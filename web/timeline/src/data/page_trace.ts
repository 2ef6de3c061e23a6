// A page's trace as its view sees it.

import type {
  Bars,
  Cycles,
  Dropout,
  EventKind,
  Lane,
  Matches,
  Overview,
  Points,
  RecordDetail,
  Selection,
  StatisticsRow,
  Trace,
} from '../trace';
import { emptyLongCalls } from './bars';
import { fillCycles, type CycleLevels } from './cycles';
import { DrawnBars } from './drawn_bars';
import type { Head } from './head';
import { kProcessorRows } from './processors';
import type { Asked } from './protocol';

// The threads', and then the processors'.
function lanesOf(head: Head): Lane[] {
  const threads = head.lanes.map((lane, id) => ({ ...lane, id }));
  const deepest = threads.reduce((most, lane) => Math.max(most, lane.depth), 0);
  const processors = head.processors.map((processor, place): Lane => ({
    id: threads.length + place,
    kind: 'processor',
    name: `processor ${processor}`,
    depth: Math.min(deepest, kProcessorRows),
    records: 0,
    busy: 0,
    processor,
    driver: '',
    begin: head.begin,
    end: head.end,
  }));
  return [...threads, ...processors];
}

export class PageTrace implements Trace {
  readonly title: string;
  readonly records: number;
  readonly begin: number;
  readonly end: number;
  readonly notes: readonly string[];
  readonly events: readonly EventKind[];
  readonly families: readonly string[];
  readonly lanes: readonly Lane[];
  readonly dropouts: readonly Dropout[];
  readonly overview: Overview;
  readonly ready: Promise<void>;

  private readonly drawn: DrawnBars;
  private onProcessors: DrawnBars | null = null; // made when it is first asked for
  private cycleLevels: ReadonlyMap<number, CycleLevels> | null = null; // by lane
  private callback: () => void = () => undefined;
  private readonly found: Promise<Matches>;

  constructor(
    private readonly head: Head,
    private readonly asked: Asked,
  ) {
    this.title = head.title;
    this.records = head.records;
    this.begin = head.begin;
    this.end = head.end;
    this.notes = head.notes;
    this.events = head.events;
    this.families = head.families;
    this.lanes = lanesOf(head);
    this.dropouts = head.dropouts.map((dropout) => ({ culprit: '', culpritRecord: -1, ...dropout }));
    this.overview = {
      busy: Float32Array.from(head.overview.busy, (share) => share / 1000),
      failures: Uint32Array.from(head.overview.failures),
      records: Uint32Array.from(head.overview.records),
    };
    this.drawn = new DrawnBars(head, asked, () => this.callback());
    const cycles = asked.cycles().then((lanes) => {
      this.cycleLevels = lanes;
      this.callback();
    });
    this.found = asked.failures();
    this.ready = Promise.all([cycles, this.found]).then(() => undefined);
  }

  onUnpacked(callback: () => void): void {
    this.callback = callback;
  }

  bars(lane: number, from: number, to: number, nsPerPixel: number, into: Bars): boolean {
    const processor = lane - this.head.lanes.length;
    if (processor < 0) return this.drawn.fill(lane, from, to, nsPerPixel, 0, into);
    this.onProcessors ??= this.processorBars();
    return this.onProcessors.fill(processor, from, to, nsPerPixel, 0, into);
  }

  private processorBars(): DrawnBars {
    const { asked } = this;
    const source = {
      bars: (block: number) => asked.processorBars(block),
      level: (number: number) => asked.processorLevel(number),
      long: () => Promise.resolve(emptyLongCalls()),
    };
    return new DrawnBars(this.head, source, () => this.callback());
  }

  points(lane: number, from: number, to: number, nsPerPixel: number, into: Points): boolean {
    return this.drawn.fill(lane, from, to, nsPerPixel, 1, into);
  }

  cycles(lane: number, from: number, to: number, nsPerPixel: number, into: Cycles): boolean {
    const levels = this.cycleLevels?.get(lane);
    if (levels === undefined) into.count = 0;
    else fillCycles(levels, from, to, nsPerPixel, into);
    return this.cycleLevels !== null;
  }

  detail(record: number): Promise<RecordDetail> {
    return this.asked.detail(record);
  }

  search(words: string, found: (matches: Matches) => void, stop: AbortSignal): void {
    void this.asked.search(words, found, stop);
  }

  statistics(selection: Selection): Promise<readonly StatisticsRow[]> {
    return this.asked.statistics(selection);
  }

  failures(): Promise<Matches> {
    return this.found;
  }
}
