// Which lanes are shown, in what order and how high: pinned ones first, I/O threads next, then those
// that made the sound break off, then the busiest; idle threads fold into one line.
import type { Lane, Trace } from '../trace';
import { counted } from './units';

export type Grouping = 'thread' | 'processor' | 'driver';
export const kGroupings: readonly Grouping[] = ['thread', 'processor', 'driver'];

// Sizes in layout pixels.
export const kRow = 18; // a depth
export const kDeepRow = 5; // a depth beyond the first kFullRows
export const kFullRows = 10;
export const kMostRows = 48; // deeper calls are not drawn
export const kStrip = 40; // an I/O thread's cycles
export const kPadding = 6;
const kTitle = 26; // above the calls, where the screen is too narrow for a column of titles
const kLeast = 44;
const kFolded = 26;
const kHeading = 30;

// A thread that spends less of the trace than this inside calls is idle.
const kIdleShare = 0.001;

export interface Row {
  readonly lane: Lane | null; // null: a heading
  readonly text: string; // of a heading
  readonly idle: boolean; // the line that opens and closes the idle threads
  readonly group: string; // that the heading opens and closes, '' where there is none
  readonly folded: boolean;
  readonly top: number;
  readonly height: number;
  readonly stripTop: number; // where the cycles begin, from the lane's top
  readonly callsTop: number; // where depth 0 begins
  readonly depths: number;
}

// What the reader has chosen for the lanes.
export interface LaneChoice {
  grouping: Grouping;
  pinned: number[];
  hidden: Set<number>;
  folded: Set<number>;
  closed: Set<string>; // groups
  idleShown: boolean;
}

export function firstChoice(): LaneChoice {
  return {
    grouping: 'thread',
    pinned: [],
    hidden: new Set(),
    folded: new Set(),
    closed: new Set(),
    idleShown: false,
  };
}

export function depthTop(depth: number): number {
  if (depth <= kFullRows) return depth * kRow;
  return kFullRows * kRow + (Math.min(depth, kMostRows) - kFullRows) * kDeepRow;
}

export function depthHeight(depth: number): number {
  return depth < kFullRows ? kRow - 1 : kDeepRow - 1;
}

// Threads that matter however idle they are: those of dropouts and their culprits.
export function concernedLanes(trace: Trace): ReadonlySet<number> {
  const concerned = new Set<number>();
  for (const dropout of trace.dropouts) {
    concerned.add(dropout.lane);
    const thread = /thread (0x[0-9a-f]+)/i.exec(dropout.culprit)?.[1];
    if (!thread) continue;
    const lane = trace.lanes.find((one) => isThread(one) && one.name.includes(thread));
    if (lane) concerned.add(lane.id);
  }
  return concerned;
}

// The group that a thread is in.
export function groupOf(lane: Lane, { grouping }: LaneChoice): string {
  if (grouping === 'thread') return '';
  return grouping === 'processor' ? `processor ${lane.processor}` : lane.driver || 'no driver';
}

function isThread(lane: Lane): boolean {
  return lane.kind === 'io' || lane.kind === 'thread';
}

// Where points stand: on the lower edge of the call around them, so that its name can be read.
export function pointTop(depth: number): number {
  return depthTop(depth) + depthHeight(depth) - 1;
}

export class LaneLayout {
  rows: Row[] = [];
  height = 0;
  private readonly concerned: ReadonlySet<number>;
  private narrow = false;

  constructor(private readonly trace: Trace) {
    this.concerned = concernedLanes(trace);
  }

  isIdle(lane: Lane): boolean {
    const span = this.trace.end - this.trace.begin;
    return lane.kind === 'thread' && lane.busy <= span * kIdleShare && !this.concerned.has(lane.id);
  }

  arrange(choice: LaneChoice, narrow: boolean): void {
    this.rows = [];
    this.height = 0;
    this.narrow = narrow;
    const lanes = this.trace.lanes.filter((lane) => !choice.hidden.has(lane.id));
    const pinned = new Set(choice.pinned);
    for (const id of choice.pinned) {
      const lane = lanes.find((one) => one.id === id);
      if (lane) this.addLane(lane, choice);
    }
    const left = lanes.filter((lane) => !pinned.has(lane.id));
    left
      .filter((lane) => lane.kind === 'io')
      .sort(busiestFirst)
      .forEach((lane) => this.addLane(lane, choice));
    const threads = left
      .filter((lane) => lane.kind === 'thread')
      .sort((one, other) => this.concern(other) - this.concern(one) || busiestFirst(one, other));
    if (choice.grouping === 'thread') {
      this.addThreads(threads, choice);
      return;
    }
    const own = left.filter((lane) => lane.kind === choice.grouping);
    const shown = threads.filter((lane) => !this.isIdle(lane) || choice.idleShown);
    const groups = [...own.map((lane) => lane.name), ...shown.map((lane) => groupOf(lane, choice))];
    const names = [...new Set(groups)];
    if (choice.grouping === 'processor') names.sort(byNumber);
    for (const name of names) {
      const head = own.find((lane) => lane.name === name);
      const inside = shown.filter((lane) => groupOf(lane, choice) === name);
      if (head) this.addLane(head, choice);
      else this.addGroup(name, inside.length, choice);
      if (head || !choice.closed.has(name)) for (const lane of inside) this.addLane(lane, choice);
    }
    this.addIdleLine(threads, choice);
  }

  rowAt(y: number): Row | null {
    return this.rows.find((row) => y >= row.top && y < row.top + row.height) ?? null;
  }

  rowOf(lane: number): Row | null {
    return this.rows.find((row) => row.lane?.id === lane) ?? null;
  }

  private concern(lane: Lane): number {
    return this.concerned.has(lane.id) ? 1 : 0;
  }

  private addThreads(threads: readonly Lane[], choice: LaneChoice): void {
    for (const lane of threads) if (!this.isIdle(lane)) this.addLane(lane, choice);
    this.addIdleLine(threads, choice);
    if (!choice.idleShown) return;
    for (const lane of threads) if (this.isIdle(lane)) this.addLane(lane, choice);
  }

  private addIdleLine(threads: readonly Lane[], choice: LaneChoice): void {
    const idle = threads.filter((lane) => this.isIdle(lane)).length;
    if (idle === 0) return;
    const text = counted(idle, 'idle thread') + (choice.idleShown ? '' : ', folded');
    this.addHeading({ text, idle: true, group: '', folded: !choice.idleShown });
  }

  private addGroup(group: string, threads: number, choice: LaneChoice): void {
    const text = `${group} · ${counted(threads, 'thread')}`;
    this.addHeading({ text, idle: false, group, folded: choice.closed.has(group) });
  }

  private addHeading(heading: Pick<Row, 'text' | 'idle' | 'group' | 'folded'>): void {
    this.add({ lane: null, ...heading, stripTop: 0, callsTop: 0, depths: 0 }, kHeading);
  }

  private addLane(lane: Lane, choice: LaneChoice): void {
    const folded = choice.folded.has(lane.id);
    const depths = folded ? 1 : Math.min(kMostRows, Math.max(1, lane.depth));
    const stripTop = this.narrow ? kTitle : kPadding;
    const callsTop = stripTop + (lane.kind === 'io' && !folded ? kStrip + 4 : 0);
    const needed = callsTop + depthTop(depths) + kPadding;
    const least = this.narrow ? 0 : folded ? kFolded : kLeast;
    const row = { lane, text: '', idle: false, group: '', folded, stripTop, callsTop, depths };
    this.add(row, Math.max(least, needed));
  }

  private add(row: Omit<Row, 'top' | 'height'>, height: number): void {
    this.rows.push({ ...row, top: this.height, height });
    this.height += height;
  }
}

function busiestFirst(one: Lane, other: Lane): number {
  return other.busy - one.busy || other.records - one.records || one.id - other.id;
}

function byNumber(one: string, other: string): number {
  return one.localeCompare(other, 'en', { numeric: true });
}
