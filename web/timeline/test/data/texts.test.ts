// Every text of every event, made in the page, against what sonaprobe -r prints.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { nameOf } from '../../src/data/texts';
import { divisor, pageOf, randomFrom, run, writeTrace, type Slot } from './programs';

const kVariants = 8;
const kNewLine = 10;

// The records that select each text, as the tables' own companion makes them.
function selectingRecords(): Slot[] {
  const slots: Slot[] = [];
  for (const line of run('sonaprobe-events', 'records').toString().split('\n')) {
    const [debugid, ...fields] = line.split(' ');
    if (!debugid?.startsWith('0x')) continue;
    const words = [0n, 0n, 0n, 0n, 0n];
    for (const field of fields) {
      const [name, value] = field.split('=');
      if (/^a[1-5]$/.test(name!)) words[Number(name![1]) - 1] = BigInt(value!);
    }
    slots.push({ debugid: Number(debugid), words });
  }
  return slots;
}

const kEdges = [0n, 1n, 9n, 0x7fff_ffffn, 0x8000_0000n, 0xffff_ffffn, 0x1_0000_0000n, 2n ** 53n,
  2n ** 53n + 1n, 2n ** 63n - 1n, 2n ** 63n, 2n ** 64n - 1n, 2n ** 49n + 57n];

// A word of any kind; none of its bytes ends a line.
function randomWord(random: (below: number) => number): bigint {
  if (random(4) === 0) return kEdges[random(kEdges.length)]!;
  let word = 0n;
  for (let bytes = 1 + random(8); bytes > 0; --bytes) {
    const byte = random(256);
    word = (word << 8n) | BigInt(byte === kNewLine ? 11 : byte);
  }
  return word;
}

test('every text of every event is the line that sonaprobe prints', async () => {
  const random = randomFrom(1);
  const slots: Slot[] = [divisor(24n)];
  for (const { debugid, words } of selectingRecords()) {
    slots.push({ debugid, words: words! });
    for (let i = 0; i < kVariants; ++i) {
      // What selects the text stays often enough.
      const varied = words!.map((word) => (random(2) === 0 ? word : randomWord(random)));
      slots.push({ debugid, words: varied });
    }
  }
  const trace = writeTrace('texts.raw', slots.map((slot, i) => ({ time: BigInt(24 * i), ...slot })));
  const lines = run('sonaprobe', '-v', '-A', '-s', '-i', '-u', '-S', '-r', trace)
    .toString('latin1')
    .trimEnd()
    .split('\n')
    .filter((line) => line.includes('::')) // not what it says of itself
    .map((line) => line.replace(/^\S+ (?:->|<-|  ) /, ''));
  const { engine, head } = await pageOf(trace);
  const isPrinted = (event: number): boolean => head.events[event]!.code >>> 10 !== 0x0524_0000 >>> 10;
  const names = new Set(head.kinds.map(nameOf)); // of silent records
  let printed = 0;
  for (let record = 0; record < head.records; ++record) {
    const { line, event, values } = await engine.detail(record);
    const { driver } = head.events[event]!;
    if (names.has(line) || !isPrinted(event)) continue;
    assert.equal(line, lines[printed], `record ${record} of ${driver}`);
    for (const value of values) assert.ok(line.includes(value.text), value.name);
    ++printed;
  }
  assert.equal(printed, lines.length);
});
