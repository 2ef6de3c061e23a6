// A trace made in memory, for tests of the view: I/O threads with cycles and three dropouts, busy and
// idle threads, failures, deep nesting, names that try to break out. The same at every run.
import { grow } from '../src/columns';
import {
  type Bars,
  type Cycles,
  type Dropout,
  type EventKind,
  kFailure,
  kMerged,
  kWaiting,
  type Lane,
  type LaneKind,
  type Matches,
  type Points,
  type RecordDetail,
  type Selection,
  type StatisticsRow,
  type Trace,
} from '../src/trace';

interface Call {
  lane: number;
  begin: number;
  end: number;
  depth: number;
  event: number;
  flags: number;
  record: number;
  parent: Call | null;
  inside: number; // ns of the calls directly inside
}
interface Point {
  lane: number;
  time: number;
  depth: number;
  event: number;
  flags: number;
  record: number;
  parent: Call | null;
}
interface Cycle {
  begin: number;
  end: number;
  due: number;
  budget: number;
  dropout: boolean;
  call: Call;
}

export interface Making {
  readonly records?: number;
  readonly hostile?: boolean;
  readonly healthy?: boolean; // no dropouts, no failures
}

const kBudget = 10_666_667;
const kProcessors = 4;
export const kHostile = [
  '</script><script>document.title="broken"</script>',
  '<img src=x onerror="document.title=\'broken\'">',
  'left \u202e thgir',
  'bell \u0007 line\nbreak \u0000 nul',
  '\ud800 half a pair',
  'long '.repeat(200_000),
  '"><b>&amp; ${x} {{y}}',
];

const kMethods: readonly (readonly [string, number, string])[] = [
  ['QuorraHAL', 0, 'IOThread'],
  ['QuorraHAL', 0, 'IOCycle'],
  ['QuorraHAL', 0, 'Client'],
  ['QuorraHAL', 0, 'OVERLOAD'],
  ['PlexoEngine', 1, 'performAudioEngineStart'],
  ['PlexoEngine', 1, 'clipOutputSamples'],
  ['PlexoEngine', 1, 'eraseOutputSamples'],
  ['OrvelHDAWidget', 2, 'pinSense'],
  ['OrvelHDACodec', 2, 'sendVerb'],
  ['OrvelHDACodec', 2, 'waitForResponse'],
  ['TamsinUSBDevice', 3, 'configurationChanged'],
  ['TamsinUSBStream', 3, 'writeHandler'],
  ['BirchEmbedded', 4, 'setPowerState'],
  ['BirchEmbedded', 4, 'dmaInterrupt'],
  ['', 0, 'code 0x01400004'],
];
const kFamilies = ['audio server', 'engine', 'HDA', 'USB', 'embedded'];

export function madeTrace(making: Making = {}): Trace {
  return new MadeTrace(making);
}

class MadeTrace implements Trace {
  readonly title: string;
  readonly begin = 0;
  readonly end: number;
  readonly notes: readonly string[];
  readonly events: readonly EventKind[];
  readonly families = kFamilies;
  readonly lanes: readonly Lane[];
  readonly dropouts: readonly Dropout[];
  readonly overview;
  readonly ready = Promise.resolve();
  readonly records: number;
  private readonly calls: Call[][] = []; // by lane, then in the order of begin
  private readonly rows: Call[][][] = []; // by lane and depth
  private readonly points_: Point[][] = [];
  private readonly cycles_ = new Map<number, Cycle[]>();
  private readonly byRecord = new Map<number, Call | Point>();
  private random = 12345;

  constructor(making: Making) {
    const records = making.records ?? 200_000;
    const cycles = Math.max(120, Math.round(records / 72));
    this.end = cycles * kBudget + 4e6;
    this.title = making.hostile ? `${kHostile[0]}${kHostile[2]}.raw` : 'pops-on-headphones.raw';
    const names = making.hostile ? kHostile : [];
    this.events = [
      ...kMethods.map(([driver, family, method], at) => ({
        code: at,
        driver,
        family,
        method,
      })),
      ...names.map((method, at) => ({
        code: 0x1000 + at,
        driver: method,
        family: at,
        method,
      })),
    ];
    this.notes = making.hostile
      ? kHostile.slice(0, 5)
      : ['The trace has no divisor: 1000 ticks a microsecond were assumed.'];
    const dropouts: Dropout[] = [];
    this.ioThread(0, cycles, 0, making, dropouts);
    this.ioThread(1, Math.round(cycles / 3), this.end / 3, making, []);
    for (let lane = 2; lane < 12; lane++) this.busyThread(lane, cycles, making);
    for (let lane = 12; lane < 40; lane++) this.idleThread(lane);
    this.deepThread(40);
    if (making.hostile) this.hostileThread(41);
    this.records = this.number();
    this.dropouts = dropouts.map((dropout, at) => this.blame(dropout, at));
    this.group();
    this.lanes = this.calls.map((_, id) => this.laneOf(id, names));
    this.overview = this.overviewOf(4096);
  }

  private next(): number {
    this.random = (Math.imul(this.random, 1664525) + 1013904223) >>> 0;
    return this.random / 2 ** 32;
  }

  private call(
    lane: number,
    begin: number,
    end: number,
    event: number,
    parent: Call | null,
    flags = 0,
  ): Call {
    const depth = parent ? parent.depth + 1 : 0;
    const made: Call = { lane, begin, end, depth, event, flags, record: -1, parent, inside: 0 };
    if (parent) parent.inside += end - begin;
    (this.calls[lane] ??= []).push(made);
    return made;
  }
  private point(lane: number, time: number, event: number, parent: Call | null, flags = 0): Point {
    const depth = parent?.depth ?? 0;
    const made: Point = { lane, time, depth, event, flags, record: -1, parent };
    (this.points_[lane] ??= []).push(made);
    return made;
  }

  private ioThread(
    lane: number,
    cycles: number,
    from: number,
    making: Making,
    dropouts: Dropout[],
  ): void {
    this.calls[lane] = [];
    const thread = this.call(
      lane,
      from,
      Math.min(this.end, from + cycles * kBudget),
      0,
      null,
      kWaiting,
    );
    const made: Cycle[] = [];
    const places = making.healthy
      ? []
      : [0.34, 0.35, 0.78].map((share) => Math.floor(share * cycles));
    for (let at = 0; at < cycles - 1; at++) {
      const due = from + at * kBudget + 1e5;
      const late = lane === 0 && places.includes(at);
      const begin = due + 20e3 + this.next() * 60e3;
      const used = late ? kBudget * 0.96 : kBudget * (0.18 + 0.3 * this.next() * this.next());
      const end = begin + used;
      const cycle = this.call(lane, begin, end, 1, thread);
      const client = this.call(lane, begin + used * 0.05, begin + used * 0.8, 2, cycle);
      this.call(lane, client.begin + used * 0.1, client.begin + used * 0.3, 5, client);
      this.call(lane, begin + used * 0.84, begin + used * 0.93, 6, cycle);
      const over = late || (lane === 1 && at % 91 === 90);
      made.push({
        begin,
        end: late ? due + kBudget * 1.12 : end,
        due,
        budget: kBudget,
        dropout: late,
        call: cycle,
      });
      if (lane === 1 && over) made[made.length - 1].end = due + kBudget * 1.05;
      if (!late) continue;
      this.point(lane, end - 1e4, 3, cycle);
      dropouts.push({
        record: -1,
        time: end - 1e4,
        lane,
        lacking: 0.12 * kBudget,
        cause: 'blocked-by',
        meaning: "another thread's call held the I/O thread up",
        certainty: 'likely',
        culprit: '',
        culpritRecord: -1,
        evidence: [],
      });
    }
    this.cycles_.set(lane, made);
  }

  private busyThread(lane: number, cycles: number, making: Making): void {
    this.calls[lane] = [];
    const event = 4 + ((lane * 3) % 10);
    const every = kBudget * (0.4 + 0.5 * (lane % 5));
    let time = this.next() * every;
    while (time < cycles * kBudget) {
      const length = every * (0.1 + 0.35 * this.next());
      const end = Math.min(this.end, time + length);
      const failed = !making.healthy && lane === 3 && this.next() < 0.01 ? kFailure : 0;
      const outer = this.call(lane, time, end, event, null, failed);
      const inner = this.call(
        lane,
        time + length * 0.1,
        time + length * 0.6,
        4 + ((lane * 5 + 1) % 10),
        outer,
      );
      if (lane % 2 === 0)
        this.call(lane, inner.begin + length * 0.1, inner.begin + length * 0.3, 9, inner);
      if (this.next() < 0.3) this.point(lane, time + length * 0.8, lane === 11 ? 14 : 8, outer);
      time += every * (0.6 + 0.8 * this.next());
    }
  }

  private idleThread(lane: number): void {
    this.calls[lane] = [];
    for (let at = 0; at < 3; at++) {
      const begin = this.next() * this.end * 0.99;
      this.call(lane, begin, begin + 30e3, 4 + (lane % 10), null);
    }
    this.calls[lane].sort((one, other) => one.begin - other.begin);
  }

  private deepThread(lane: number): void {
    this.calls[lane] = [];
    for (let time = this.end * 0.1; time < this.end * 0.9; time += this.end * 0.2) {
      let parent: Call | null = null;
      for (let depth = 0; depth < 200; depth++)
        parent = this.call(
          lane,
          time + depth * 1e4,
          time + 20e6 - depth * 1e4,
          4 + (depth % 10),
          parent,
        );
    }
  }

  private hostileThread(lane: number): void {
    this.calls[lane] = [];
    kHostile.forEach((_, at) => {
      const begin = (this.end * (at + 1)) / 10;
      const outer = this.call(
        lane,
        begin,
        begin + this.end / 12,
        kMethods.length + at,
        null,
        at === 3 ? kFailure : 0,
      );
      this.point(lane, begin + 1e6, kMethods.length + at, outer);
    });
  }

  // Records in the order of time: a call has its start and its end.
  private number(): number {
    const all: { time: number; take(record: number): void }[] = [];
    for (const call of this.calls.flat()) {
      all.push({
        time: call.begin,
        take: (record) => this.byRecord.set((call.record = record), call),
      });
      all.push({ time: call.end, take: (record) => this.byRecord.set(record, call) });
    }
    for (const point of this.points_.flat())
      if (point)
        all.push({
          time: point.time,
          take: (record) => this.byRecord.set((point.record = record), point),
        });
    all.sort((one, other) => one.time - other.time);
    all.forEach((one, record) => one.take(record));
    return all.length;
  }

  // The culprit of a dropout is the call of lane 2 that is open then.
  private blame(dropout: Dropout, at: number): Dropout {
    const overload = this.points_[0].filter((point) => point.event === 3)[at];
    const begun = this.calls[2].filter((call) => call.depth === 0 && call.begin < dropout.time);
    const culprit = begun[begun.length - 1];
    const last = at === 2;
    return {
      ...dropout,
      record: overload.record,
      cause: last ? 'late-wake' : dropout.cause,
      meaning: last
        ? 'the cycle began late, and nothing on its processor says why'
        : dropout.meaning,
      certainty: last ? 'possible' : 'likely',
      culprit: last
        ? ''
        : `${this.events[culprit.event].driver}::${this.events[culprit.event].method}, thread 0x00001002`,
      culpritRecord: last ? -1 : culprit.record,
      evidence: [overload.record, culprit.record],
    };
  }

  private group(): void {
    this.calls.forEach((calls, lane) => {
      const rows: Call[][] = (this.rows[lane] = []);
      for (const call of calls) (rows[call.depth] ??= []).push(call);
      for (const row of rows) row.sort((one, other) => one.begin - other.begin);
    });
  }

  private laneOf(id: number, hostile: readonly string[]): Lane {
    const rows = this.rows[id];
    const outer = rows[0] ?? [];
    const working = id < 2 ? (rows[1] ?? []) : outer;
    let busy = 0;
    for (const call of working) busy += call.end - call.begin;
    const kind: LaneKind = id < 2 ? 'io' : 'thread';
    return {
      id,
      kind,
      name: id === 41 ? hostile[2] : `thread 0x${(0x1000 + id).toString(16).padStart(8, '0')}`,
      depth: rows.length,
      records: 2 * this.calls[id].length,
      busy,
      processor: id % kProcessors,
      driver: this.events[working[0]?.event ?? 14].driver,
      begin: outer[0]?.begin ?? 0,
      end: outer[outer.length - 1]?.end ?? 0,
    };
  }

  private overviewOf(buckets: number): Trace['overview'] {
    const busy = new Float32Array(buckets);
    const failures = new Uint32Array(buckets);
    const records = new Uint32Array(buckets);
    const bucketOf = (time: number) =>
      Math.min(buckets - 1, Math.floor((time / this.end) * buckets));
    for (const call of this.calls.flat()) {
      records[bucketOf(call.begin)] += 2;
      if (call.flags & kFailure) failures[bucketOf(call.begin)]++;
      if (call.depth !== (call.lane < 2 ? 1 : 0)) continue;
      const width = this.end / buckets;
      for (let at = bucketOf(call.begin); at <= bucketOf(call.end); at++) {
        const from = Math.max(call.begin, at * width);
        busy[at] += Math.max(0, Math.min(call.end, (at + 1) * width) - from) / width / 8;
      }
    }
    return { busy: busy.map((share) => Math.min(1, share)), failures, records };
  }

  onUnpacked(): void {}

  bars(lane: number, from: number, to: number, nsPerPixel: number, into: Bars): boolean {
    into.count = 0;
    const rows = this.rows[lane];
    rows.forEach((row, depth) => {
      let last = -1;
      for (let at = firstEnding(row, from); at < row.length && row[at].begin < to; at++) {
        const call = row[at];
        const narrow = call.end - call.begin < nsPerPixel;
        if (
          narrow &&
          last >= 0 &&
          call.begin - into.end[last] < nsPerPixel &&
          call.end - into.begin[last] < nsPerPixel
        ) {
          into.end[last] = call.end;
          into.flags[last] |= call.flags | kMerged;
          continue;
        }
        if (into.count === into.begin.length) grow(into);
        last = into.count++;
        into.begin[last] = call.begin;
        into.end[last] = call.end;
        into.depth[last] = depth;
        into.event[last] = call.event;
        into.flags[last] = call.flags;
        into.record[last] = call.record;
      }
    });
    return true;
  }

  points(lane: number, from: number, to: number, nsPerPixel: number, into: Points): boolean {
    into.count = 0;
    let last = -Infinity;
    for (const point of this.points_[lane] ?? []) {
      if (point.time < from || point.time >= to) continue;
      if (point.time - last < nsPerPixel && point.event !== 3) continue;
      if (into.count === into.time.length) grow(into);
      const at = into.count++;
      into.time[at] = last = point.time;
      into.depth[at] = point.depth;
      into.event[at] = point.event;
      into.flags[at] = point.flags;
      into.record[at] = point.record;
    }
    return true;
  }

  cycles(lane: number, from: number, to: number, nsPerPixel: number, into: Cycles): boolean {
    into.count = 0;
    for (const cycle of this.cycles_.get(lane) ?? []) {
      if (cycle.due + 2 * cycle.budget < from || cycle.due >= to) continue;
      const last = into.count - 1;
      const share = (cycle.end - cycle.due) / cycle.budget;
      if (last >= 0 && cycle.due + cycle.budget - into.due[last] < nsPerPixel) {
        const before = (into.end[last] - into.due[last]) / into.budget[last];
        if (cycle.dropout) into.dropout[last] = 1;
        if (share > before) into.end[last] = into.due[last] + share * cycle.budget;
        continue;
      }
      if (into.count === into.begin.length) grow(into);
      const at = into.count++;
      into.begin[at] = cycle.begin;
      into.end[at] = cycle.end;
      into.due[at] = cycle.due;
      into.budget[at] = cycle.budget;
      into.dropout[at] = cycle.dropout ? 1 : 0;
      into.record[at] = cycle.call.record;
    }
    return true;
  }

  detail(record: number): Promise<RecordDetail> {
    const found = this.byRecord.get(record)!;
    const call = 'begin' in found ? found : null;
    const parents: number[] = [];
    for (let one = found.parent; one; one = one.parent) parents.push(one.record);
    const event = this.events[found.event];
    return Promise.resolve({
      record,
      slot: record + 1,
      time: 'begin' in found ? found.begin : found.time,
      lane: found.lane,
      processor: found.lane % kProcessors,
      event: found.event,
      qualifier: call ? 1 : 0,
      object: event.driver ? '0xffffff8022e08000' : '',
      line: `${event.driver}::${event.method} - result: 0x${found.flags & kFailure ? 'e00002bc' : '0'} nodeID: 21`,
      values: [
        { name: 'result', text: found.flags & kFailure ? '0xe00002bc' : '0x0' },
        { name: 'nodeID', text: '21' },
      ],
      flags: found.flags,
      call: call && {
        begin: call.begin,
        end: call.end,
        self: call.end - call.begin - call.inside,
      },
      parents,
    });
  }

  search(words: string, found: (matches: Matches) => void, stop: AbortSignal): void {
    const wanted = words.toLowerCase();
    const matching = new Set<number>();
    this.events.forEach((event, at) => {
      if (`${event.driver}::${event.method}`.toLowerCase().includes(wanted)) matching.add(at);
    });
    const hits = [...this.calls.flat(), ...this.points_.flat()]
      .filter((one) => one && matching.has(one.event))
      .map((one) => ({ time: 'begin' in one ? one.begin : one.time, record: one.record }))
      .sort((one, other) => one.time - other.time);
    const upTo = (count: number, complete: boolean): Matches => ({
      time: Float64Array.from(hits.slice(0, count), (hit) => hit.time),
      record: Float64Array.from(hits.slice(0, count), (hit) => hit.record),
      complete,
    });
    found(upTo(hits.length >> 1, false));
    setTimeout(() => {
      if (!stop.aborted) found(upTo(hits.length, true));
    }, 20);
  }

  statistics(selection: Selection): Promise<readonly StatisticsRow[]> {
    const byEvent = new Map<number, Call[]>();
    for (const call of this.calls.flat()) {
      if (call.begin < selection.from || call.begin >= selection.to) continue;
      if (selection.lanes && !selection.lanes.includes(call.lane)) continue;
      const calls = byEvent.get(call.event);
      if (calls) calls.push(call);
      else byEvent.set(call.event, [call]);
    }
    const lengthOf = (call: Call) => call.end - call.begin;
    const rows = [...byEvent].map(([event, calls]) => {
      calls.sort((one, other) => lengthOf(one) - lengthOf(other));
      const longest = calls[calls.length - 1];
      return {
        event,
        calls: calls.length,
        failures: calls.filter((call) => call.flags & kFailure).length,
        total: calls.reduce((sum, call) => sum + lengthOf(call), 0),
        self: calls.reduce((sum, call) => sum + lengthOf(call) - call.inside, 0),
        median: lengthOf(calls[calls.length >> 1]),
        max: lengthOf(longest),
        longest: longest.record,
      };
    });
    return Promise.resolve(rows);
  }

  failures(): Promise<Matches> {
    const failed = this.calls
      .flat()
      .filter((call) => call.flags & kFailure)
      .sort((one, other) => one.begin - other.begin);
    return Promise.resolve({
      time: Float64Array.from(failed, (call) => call.begin),
      record: Float64Array.from(failed, (call) => call.record),
      complete: true,
    });
  }
}

function firstEnding(row: readonly Call[], from: number): number {
  let low = 0;
  let high = row.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (row[middle].end < from) low = middle + 1;
    else high = middle;
  }
  return low;
}
