// What the page answers against plain models of what sonascope prints of the same trace.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { newBars, newCycles, newPoints } from '../../src/columns';
import { kCutOff, kFailure, kMerged, kThinned, kUnfinished, type Matches } from '../../src/trace';
import { kProcessorRows } from '../../src/data/processors';
import type { OpenedPage } from './opened_page';
import { divisor, escaped, linesOf, pageOf, randomFrom, run, statisticsOf, story, writeTrace, type Line, type Slot } from './programs';

// Asks until all that it takes has been unpacked.
async function exactly(ask: () => boolean): Promise<void> {
  while (!ask()) await new Promise((settle) => setTimeout(settle, 5));
}

// Starts and ends without order, clocks that step back, another divisor: what cuts calls off.
function disorderedTrace(): string {
  const random = randomFrom(5);
  const codes = [0x05245c0c, 0x05245c1c, 0x05245010, 0x21040008, 0x2104000c, 0x21040000, 0x01400004];
  const slots: Slot[] = [divisor(24n)];
  let ticks = 24_000_000_000;
  for (let i = 0; i < 150_000; ++i) {
    ticks += random(500) - 20;
    if (random(20_000) === 0) ticks -= 30_000_000;
    if (random(30_000) === 0) slots.push(divisor(BigInt(20 + random(3))));
    if (random(5000) === 0) slots.push({ debugid: 0xdeadbeef });
    slots.push({
      debugid: codes[random(codes.length)]! + random(4),
      time: BigInt(ticks),
      words: [BigInt(random(3)), BigInt(random(2 ** 31)), 0n, BigInt(random(4)), BigInt(1 + random(6))],
      cpu: random(4),
    });
  }
  return writeTrace('disordered.raw', slots);
}

const traces: readonly [string, () => string][] = [
  ["the simulator's whole story", () => story('all', 150_000)],
  ['a trace without order', disorderedTrace],
];

for (const [title, make] of traces) {
  test(title, async (context) => {
    const trace = make();
    const lines = linesOf(trace);
    const opened = await pageOf(trace);
    await opened.trace.ready;
    await context.test('each record has its line, values and call', () => checkRecords(lines, opened));
    await context.test('several asked for at once do not disturb each other', () => checkAtOnce(lines, opened));
    await context.test('each call is drawn', () => checkCalls(trace, lines, opened));
    await context.test('what is short is merged, and nothing else', () => checkMerging(opened));
    await context.test('cycles are those of why', () => checkCycles(trace, opened));
    await context.test('statistics are those of stats', () => checkStatistics(trace, lines, opened));
    await context.test('search finds what the lines have', () => checkSearch(lines, opened));
    await context.test('failures are all there, in order', () => checkFailures(lines, opened));
  });
}

function nameOf(line: Line): string {
  return line.name ?? `${line.driver}::${line.method}`;
}

function textOf(line: Line): string {
  const arguments_ = line.arguments?.map((word) => `0x${BigInt(word).toString(16)}`).join(' ');
  const text = line.text ?? arguments_ ?? '';
  return text === '' ? nameOf(line) : `${nameOf(line)} ${text}`;
}

async function checkRecords(lines: readonly Line[], { engine, trace }: OpenedPage): Promise<void> {
  assert.equal(trace.records, lines.length);
  for (let record = 0; record < lines.length; record += 41) {
    const line = lines[record]!;
    const detail = await engine.detail(record);
    assert.deepEqual(
      {
        line: escaped(detail.line),
        time: detail.time,
        slot: detail.slot,
        cpu: detail.processor,
        lane: trace.lanes[detail.lane]!.name,
        object: detail.object,
        around: detail.parents.length,
        failure: (detail.flags & kFailure) !== 0,
        duration: line.qualifier === 'end' && detail.call !== null ? detail.call.end - detail.call.begin : undefined,
        values: detail.values.map(({ name }) => name),
      },
      {
        line: textOf(line),
        time: line.time_ns,
        slot: line.slot,
        cpu: line.cpu,
        lane: `thread 0x${BigInt(line.thread).toString(16)}`,
        object: line.object ?? '',
        around: line.depth,
        failure: line.failure === true,
        duration: line.duration_ns,
        values: Object.keys(line.values ?? {}),
      },
      `record ${record}`,
    );
    const starts = await Promise.all(detail.parents.slice(0, 1).map((parent) => engine.detail(parent)));
    for (const start of starts) {
      assert.equal(start.qualifier, 1);
      assert.equal(start.lane, detail.lane);
      assert.equal(start.parents.length, detail.parents.length - 1);
      assert.ok(start.call!.begin <= detail.time && detail.time <= start.call!.end);
    }
  }
}

// Blocks take turns in one room.
async function checkAtOnce(lines: readonly Line[], { engine }: OpenedPage): Promise<void> {
  const records = [0, 0.9, 0.1, 0.5, 0.9].map((share) => Math.floor(share * lines.length));
  const details = await Promise.all(records.map((record) => engine.detail(record)));
  details.forEach((detail, place) => {
    const line = lines[records[place]!]!;
    assert.deepEqual([detail.slot, detail.time, escaped(detail.line)], [line.slot, line.time_ns, textOf(line)]);
  });
}

async function checkCalls(path: string, lines: readonly Line[], { trace }: OpenedPage): Promise<void> {
  const expected = new Set<string>();
  lines.forEach((line) => {
    if (line.duration_ns === undefined) return;
    const lane = `thread 0x${BigInt(line.thread).toString(16)}`;
    expected.add([lane, line.depth, line.time_ns - line.duration_ns, line.time_ns].join());
  });
  const rows = statisticsOf(path);
  const sum = (of: (row: (typeof rows)[0]) => number): number => rows.reduce((all, row) => all + of(row), 0);
  const found = new Set<string>();
  let broken = 0;
  let points = 0;
  const bars = newBars();
  const marks = newPoints();
  for (const lane of trace.lanes.filter(({ kind }) => kind !== 'processor')) {
    await exactly(() => trace.bars(lane.id, trace.begin, trace.end + 1, 0, bars));
    for (let i = 0; i < bars.count; ++i) {
      if (i > 0) assert.ok(bars.depth[i]! > bars.depth[i - 1]! || bars.begin[i]! >= bars.begin[i - 1]!);
      assert.equal(bars.flags[i]! & kMerged, 0);
      assert.equal(lines[bars.record[i]!]!.time_ns, bars.begin[i]);
      if ((bars.flags[i]! & (kCutOff | kUnfinished)) !== 0) ++broken;
      else found.add([lane.name, bars.depth[i], bars.begin[i], bars.end[i]].join());
    }
    await exactly(() => trace.points(lane.id, trace.begin, trace.end + 1, 0, marks));
    points += marks.count;
    for (let i = 0; i < marks.count; ++i) {
      assert.equal(lines[marks.record[i]!]!.time_ns, marks.time[i]);
      assert.equal((marks.flags[i]! & kFailure) !== 0, lines[marks.record[i]!]!.failure === true);
    }
  }
  assert.deepEqual(found, expected);
  assert.equal(broken, sum((row) => row.cut_off + row.unfinished));
  assert.equal(points, sum((row) => row.points + row.orphan_ends));
}

async function checkMerging({ trace }: OpenedPage): Promise<void> {
  const random = randomFrom(3);
  const all = newBars();
  const bars = newBars();
  for (const lane of trace.lanes.slice(0, 6)) {
    await exactly(() => trace.bars(lane.id, trace.begin, trace.end + 1, 0, all));
    for (let zoom = 0; zoom < 18; ++zoom) {
      const span = (trace.end - trace.begin) / 2 ** zoom;
      const from = trace.begin + random(1000) * 0.001 * (trace.end - trace.begin - span);
      const nsPerPixel = span / 1000;
      await exactly(() => trace.bars(lane.id, from, from + span, nsPerPixel, bars));
      const near = nsPerPixel / 8; // no screen shows so little
      let at = 0;
      let long = 0;
      for (let i = 0; i < all.count; ++i) {
        if (all.end[i]! <= from + near || all.begin[i]! >= from + span - near) continue;
        const isPast = (): boolean =>
          bars.depth[at]! < all.depth[i]! || (bars.depth[at] === all.depth[i] && bars.end[at]! < all.end[i]! - near);
        while (at < bars.count && isPast()) ++at;
        const what = `zoom ${zoom}, ${lane.name}, call at ${all.begin[i]}`;
        assert.ok(at < bars.count && bars.depth[at] === all.depth[i], what);
        assert.ok(bars.begin[at]! <= all.begin[i]! + near, what);
        if (all.end[i]! - all.begin[i]! < nsPerPixel) continue;
        ++long;
        assert.ok(Math.abs(bars.begin[at]! - all.begin[i]!) <= near, what);
        assert.ok(Math.abs(bars.end[at]! - all.end[i]!) <= near, what);
        assert.equal(bars.record[at], all.record[i], what);
        assert.equal(bars.flags[at], all.flags[i], what);
      }
      const rows = new Set(bars.depth.subarray(0, bars.count)).size;
      assert.ok(bars.count <= rows * 1002 + 2 * long, `zoom ${zoom}: ${bars.count} bars`);
    }
  }
}

async function checkCycles(path: string, { trace }: OpenedPage): Promise<void> {
  // 1 where there are dropouts.
  let why: { io_threads: { thread: string; cycles: number; overloaded: number }[]; dropouts: { slot: number }[] };
  try {
    why = JSON.parse(run('sonascope', 'why', '--json', path).toString());
  } catch (error) {
    why = JSON.parse((error as { stdout: Buffer }).stdout.toString());
  }
  const cycles = newCycles();
  const found = trace.lanes
    .filter((lane) => lane.kind === 'io')
    .map((lane) => {
      assert.ok(trace.cycles(lane.id, trace.begin - 1, trace.end + 1, 0, cycles));
      const dropouts = cycles.dropout.subarray(0, cycles.count);
      const count = cycles.count;
      const overloaded = dropouts.reduce((sum, is) => sum + is, 0);
      // Merged, none is lost that has a dropout.
      trace.cycles(lane.id, trace.begin - 1, trace.end + 1, (trace.end - trace.begin) / 500, cycles);
      assert.ok(cycles.count <= Math.max(1024, count / 2) || count < 1024);
      assert.equal(cycles.dropout.subarray(0, cycles.count).some((is) => is === 1), overloaded > 0);
      return [lane.name, count, overloaded];
    });
  const expected = why.io_threads.map((io) => [`thread 0x${BigInt(io.thread).toString(16)}`, io.cycles, io.overloaded]);
  assert.deepEqual(found.sort(), expected.sort());
  assert.equal(trace.dropouts.length, why.dropouts.length);
}

async function checkStatistics(path: string, lines: readonly Line[], { trace }: OpenedPage): Promise<void> {
  const thread = lines[1000]!.thread;
  const lane = trace.lanes.findIndex(({ name }) => name === `thread 0x${BigInt(thread).toString(16)}`);
  const from = lines[Math.floor(lines.length / 3)]!.time_ns;
  const to = lines[Math.floor(lines.length / 2)]!.time_ns;
  const selections = [
    { options: [], selection: { from: trace.begin, to: trace.end, lanes: null } },
    { options: ['--from', `${from}ns`, '--to', `${to}ns`], selection: { from, to, lanes: null } },
    { options: ['--thread', thread], selection: { from: trace.begin, to: trace.end, lanes: [lane] } },
  ];
  for (const { options, selection } of selections) {
    const rows = await trace.statistics(selection);
    const found = new Map(
      rows.map((row) => [
        trace.events[row.event]!.code,
        [row.calls, row.failures, row.total, row.self, row.median, row.max],
      ]),
    );
    const expected = new Map(
      statisticsOf(path, ...options)
        .filter((row) => row.calls + row.failures > 0)
        .map((row) => [
          Number(row.code),
          [row.calls, row.failures, row.total_ns, row.self_ns, row.p50_ns, row.max_ns].map((n) => n ?? 0),
        ]),
    );
    assert.deepEqual(new Map([...found].sort()), new Map([...expected].sort()), options.join(' '));
    for (const row of rows) {
      if (row.longest < 0) continue;
      const { call } = await trace.detail(row.longest);
      assert.equal(call!.end - call!.begin, row.max);
    }
  }
}

function searched({ trace }: OpenedPage, words: string): Promise<Matches> {
  return new Promise((settle) => {
    const found = (matches: Matches): void => {
      if (matches.complete) settle(matches);
    };
    trace.search(words, found, new AbortController().signal);
  });
}

async function checkSearch(lines: readonly Line[], opened: OpenedPage): Promise<void> {
  const all = lines.map((line) => textOf(line).toLowerCase());
  for (const words of ['pinSense', 'OVERLOAD', 'result: 0xe00002bc', 'samplerate 48000', '17', '0x2', 'code 0x0140', 'cycle 5', 'true', 'no such words']) {
    const asked = words.toLowerCase().split(' ');
    const expected = all.flatMap((line, record) => (asked.every((word) => line.includes(word)) ? [record] : []));
    const { record, time } = await searched(opened, words);
    assert.deepEqual([...record].sort((a, b) => a - b), expected, words);
    assert.ok(time.every((at, i) => i === 0 || time[i - 1]! <= at), words);
  }
  assert.equal((await searched(opened, '')).record.length, 0);
}

async function checkFailures(lines: readonly Line[], { trace }: OpenedPage): Promise<void> {
  const { record, time } = await trace.failures();
  const expected = lines.flatMap((line, place) => (line.failure === true ? [place] : []));
  assert.deepEqual([...record].sort((a, b) => a - b), expected);
  assert.ok(time.every((at, i) => at === lines[record[i]!]!.time_ns && (i === 0 || time[i - 1]! <= at)));
  const { failures, records } = trace.overview;
  assert.equal(failures.reduce((sum, count) => sum + count, 0), expected.length);
  assert.equal(records.reduce((sum, count) => sum + count, 0), lines.length);
}

test('a processor has the calls of the thread that was on it last', async () => {
  const path = story('playback', 80_000);
  const lines = linesOf(path);
  const { trace, head } = await pageOf(path);
  const idOf = new Map(trace.lanes.map(({ name, id }) => [name, id]));
  const processors = trace.lanes.filter(({ kind }) => kind === 'processor');
  assert.deepEqual(
    processors.map(({ processor }) => processor),
    [...new Set(lines.map(({ cpu }) => cpu))].sort((a, b) => a - b),
  );
  // The calls that cover a time, as depth and record.
  const bars = newBars();
  const callsAt = async (lane: string, time: number): Promise<string[]> => {
    await exactly(() => trace.bars(idOf.get(lane)!, time, time + 0.5, 0, bars));
    const calls: string[] = [];
    for (let i = 0; i < bars.count && bars.depth[i]! < kProcessorRows; ++i) {
      if (bars.end[i]! > time) calls.push(`${bars.depth[i]} ${bars.record[i]}`);
    }
    return calls;
  };
  const blocks = new Set(head.blocks.filter((_, place) => place % 3 === 0));
  assert.ok(blocks.size > 1);
  const threadOn = new Map<number, string>(); // by their latest records in a block
  const processorOf = new Map<string, number>();
  let asked = 0;
  for (const [record, { cpu, thread, time_ns: begin }] of lines.slice(0, -1).entries()) {
    if (blocks.has(record)) threadOn.clear();
    threadOn.set(cpu, thread);
    processorOf.set(thread, cpu);
    const end = lines[record + 1]!.time_ns;
    if (record % 31 !== 0 || blocks.has(record + 1) || end - begin < 2) continue;
    for (const [processor, on] of threadOn) {
      const lane = `thread 0x${BigInt(on).toString(16)}`;
      const expected = processorOf.get(on) === processor ? await callsAt(lane, begin + 1) : [];
      const found = await callsAt(`processor ${processor}`, begin + 1);
      assert.deepEqual(found, expected, `after record ${record}, processor ${processor}`);
      asked += expected.length;
    }
  }
  assert.ok(asked > 1000);
  // Merged, the same stretches are there.
  const wide = newBars();
  const nsPerPixel = (trace.end - trace.begin) / 100;
  for (const { id } of processors) {
    await exactly(() => trace.bars(id, trace.begin, trace.end + 1, 0, bars));
    await exactly(() => trace.bars(id, trace.begin, trace.end + 1, nsPerPixel, wide));
    assert.ok(wide.count > 0 && wide.count <= Math.min(bars.count, 101 * kProcessorRows * 2));
    assert.equal(wide.begin[0], bars.begin[0]);
  }
});

test('a selection keeps both ends of a call, and the calls around them', async () => {
  const trace = story('playback', 60_000);
  const whole = linesOf(trace);
  const { trace: part, engine } = await pageOf(trace, '--driver', 'OrvelHDAEngine');
  const selected = linesOf(trace, '--driver', 'OrvelHDAEngine');
  const slots = new Set<number>();
  for (let record = 0; record < part.records; ++record) slots.add((await engine.detail(record)).slot);
  for (const { slot } of selected) assert.ok(slots.has(slot));
  assert.ok(part.records < whole.length);
  assert.ok(part.events.every(({ driver }) => driver === 'OrvelHDAEngine'));
  assert.match(part.notes[0]!, /^A part of the trace: /);
});

test('a thinned page keeps what matters, and covers what it merged', async () => {
  const path = story('all', 30_000);
  const lines = linesOf(path);
  const whole = await pageOf(path);
  const opened = await pageOf(path, '--most', '16000');
  const { trace, engine, head } = opened;
  const merged = lines.length - trace.records;
  assert.ok(trace.records > 5000 && trace.records <= 16_000, `${trace.records} kept`);
  assert.ok(trace.notes.some((note) => note.startsWith(`Thinned: ${merged.toLocaleString('en')} of 30,000 records`)));

  const recordOf = new Map<number, number>(); // by slot
  for (let record = 0; record < trace.records; ++record) recordOf.set((await engine.detail(record)).slot, record);
  const slotsOf = (page: OpenedPage, records: Iterable<number>): Promise<number[]> =>
    Promise.all([...records].map(async (record) => (await page.engine.detail(record)).slot));
  assert.deepEqual(await slotsOf(opened, (await trace.failures()).record), await slotsOf(whole, (await whole.trace.failures()).record));
  assert.ok(trace.dropouts.length > 0);
  for (const [i, { evidence }] of whole.trace.dropouts.entries()) {
    assert.deepEqual(await slotsOf(opened, trace.dropouts[i]!.evidence), await slotsOf(whole, evidence));
  }
  const longest = new Map((await trace.statistics({ from: trace.begin, to: trace.end, lanes: null })).map((row) => [trace.events[row.event]!.code, row.max]));
  for (const row of statisticsOf(path)) assert.equal(longest.get(Number(row.code)) ?? 0, row.max_ns ?? 0, row.code);

  // A call that is left out lies in a bar that says so, of its depth or of one around it.
  const near = head.levels.at(-1)! / 8; // levels are rounded
  const bars = newBars();
  let covered = 0;
  for (const lane of trace.lanes) {
    await exactly(() => trace.bars(lane.id, trace.begin, trace.end + 1, 0, bars));
    const thinned = [...bars.flags.subarray(0, bars.count).keys()].filter((i) => (bars.flags[i]! & kThinned) !== 0);
    for (const i of thinned) assert.ok((bars.flags[i]! & kMerged) !== 0 && bars.record[i]! < trace.records);
    for (const line of lines) {
      if (line.duration_ns === undefined || recordOf.has(line.slot)) continue;
      if (lane.name !== `thread 0x${BigInt(line.thread).toString(16)}`) continue;
      const begin = line.time_ns - line.duration_ns;
      const around = thinned.some((i) => {
        return bars.depth[i]! <= line.depth && bars.begin[i]! <= begin + near && line.time_ns <= bars.end[i]! + near;
      });
      assert.ok(around, `slot ${line.slot}`);
      ++covered;
    }
  }
  assert.ok(covered > 3000, `${covered} calls`);
});

// A cycle whose start is merged refers to the latest record before it that is kept.
test('cycles of a thinned page refer to its records', async () => {
  const path = story('all', 30_000);
  const starts = new Map<string, number>(); // slots
  for (const line of linesOf(path)) {
    if (line.method !== 'IOCycle' || line.qualifier !== 'start') continue;
    starts.set(`thread 0x${BigInt(line.thread).toString(16)}, ${line.time_ns}`, line.slot);
  }
  const { trace, engine } = await pageOf(path, '--most', '16000');
  const kept: number[] = [];
  for (let record = 0; record < trace.records; ++record) kept.push((await engine.detail(record)).slot);
  const cycles = newCycles();
  let whole = 0;
  let merged = 0;
  for (const { id, name } of trace.lanes.filter(({ kind }) => kind === 'io')) {
    await exactly(() => trace.cycles(id, trace.begin, trace.end + 1, 0, cycles));
    for (let at = 0; at < cycles.count; ++at) {
      const start = starts.get(`${name}, ${cycles.begin[at]}`)!;
      assert.equal(kept[cycles.record[at]!], kept.findLast((slot) => slot <= start));
      if (kept.includes(start)) ++whole;
      else ++merged;
    }
  }
  assert.ok(whole > 100 && merged > 100, `${whole} whole, ${merged} merged`);
});

test('a search that is stopped says nothing more', async () => {
  const { trace } = await pageOf(story('usb', 60_000));
  const stop = new AbortController();
  let told = 0;
  trace.search('result', () => ++told, stop.signal);
  stop.abort();
  await trace.ready;
  assert.equal(told, 0);
});
