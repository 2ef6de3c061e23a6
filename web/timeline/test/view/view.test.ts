// What the view works out without a screen: times, texts, colours, lanes, moving, the address.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { barRgb, kDark, kHueCount, kLight, kShades } from '../../src/view/colours';
import { findingsOf } from '../../src/view/dropouts';
import { readFragment, writeFragment } from '../../src/view/fragment';
import { keyOf, kKeys } from '../../src/view/keys';
import { firstChoice, LaneLayout } from '../../src/view/lanes';
import { spanFor } from '../../src/view/navigation';
import { tickText, ticksOf } from '../../src/view/ruler';
import { kNameLimit, shown } from '../../src/view/text';
import { count, duration, moment, percent, roundStep } from '../../src/view/units';
import { Viewport } from '../../src/view/viewport';
import { madeTrace } from '../made_trace';

test('durations have three digits that matter, in the unit that fits', () => {
  const cases: [number, string][] = [
    [0, '0 ns'],
    [999, '999 ns'],
    [1000, '1.00 µs'],
    [412_300, '412 µs'],
    [999_600, '1.00 ms'],
    [2_850_000, '2.85 ms'],
    [16_940_000, '16.9 ms'],
    [-9_996_000, '-10.0 ms'],
    [59_400_000_000, '59.4 s'],
    [125_000_000_000, '2 min 5 s'],
    [7_380_000_000_000, '2 h 3 min'],
  ];
  for (const [ns, text] of cases) assert.equal(duration(ns), text);
});

test('moments are as exact as asked, digits in groups of three', () => {
  const cases: [number, number, string][] = [
    [12_345_678_901, 1, '12.345 678 901 s'],
    [12_345_678_901, 1e3, '12.345 679 s'],
    [12_345_678_901, 1e9, '12 s'],
    [999_999_999, 1e6, '1.000 s'],
    [-1_500_000, 1e6, '-0.002 s'],
    [125_040_000_000, 1e7, '2 min 05.04 s'],
    [3_725_000_000_000, 1e9, '1 h 2 min 05 s'],
  ];
  for (const [ns, step, text] of cases) assert.equal(moment(ns, step), text);
});

test('numbers and shares', () => {
  assert.equal(count(88452), '88,452');
  assert.equal(percent(0.854), '85 %');
  assert.equal(percent(0.0004), 'less than 0.1 %');
  assert.deepEqual([1, 3, 11, 99, 5000].map(roundStep), [1, 5, 20, 100, 5000]);
});

test('the ruler counts in round steps, short ones from a moment that is written out', () => {
  assert.deepEqual(ticksOf(4.2e9, 1e5), { step: 1e7, base: 0 });
  assert.deepEqual(ticksOf(4_215_300_000, 100), { step: 1e4, base: 4_215_000_000 });
  assert.equal(tickText(4_210_000_000, 1e7), '4.21 s');
  assert.equal(tickText(4_215_120_000, 2e4), '+120 µs');
  assert.equal(tickText(4_215_000_000, 2e4), '4.215 s');
  assert.equal(tickText(4_215_000_120, 20), '+120 ns');
});

test('what would not be seen is spelled out, what is too long is cut with its length', () => {
  assert.equal(shown('a\u0007b\nc\u0000'), 'a\\x07b\\nc\\x00');
  assert.equal(shown('left \u202e thgir'), 'left \\u202e thgir');
  assert.equal(shown('\ud800 half'), '\\ud800 half');
  assert.equal(shown('𝄞 is whole, ü too'), '𝄞 is whole, ü too');
  const long = shown('x'.repeat(1_048_576), kNameLimit);
  assert.equal(long, `${'x'.repeat(kNameLimit)}… (1,048,576 characters)`);
});

function luminance(rgb: readonly number[]): number {
  const [r, g, b] = rgb.map((part) => {
    const kept = Math.min(1, Math.max(0, part));
    return kept <= 0.04045 ? kept / 12.92 : ((kept + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}
function contrast(one: readonly number[], other: readonly number[]): number {
  const [low, high] = [luminance(one), luminance(other)].sort((a, b) => a - b);
  return (high + 0.05) / (low + 0.05);
}

test('a method on its bar has a contrast of 4.5 to 1 at least, at every hue and depth', () => {
  for (const [scheme, ink] of [
    [kLight, [0.06, 0.08, 0.1]],
    [kDark, [1, 1, 1]],
  ] as const)
    for (let hue = 0; hue < kHueCount; hue++)
      for (let shade = 0; shade < kShades; shade++) {
        const found = contrast(barRgb(hue, shade, scheme), ink);
        assert.ok(found >= 4.5, `hue ${hue}, shade ${shade}: ${found}`);
      }
});

// How the eyes that lack one kind of cones see, after Machado, Oliveira and Fernandes (2009).
const kEyes: Record<string, readonly (readonly number[])[]> = {
  all: [
    [1, 0, 0],
    [0, 1, 0],
    [0, 0, 1],
  ],
  protan: [
    [0.152286, 1.052583, -0.204868],
    [0.114503, 0.786281, 0.099216],
    [-0.003882, -0.048116, 1.051998],
  ],
  deutan: [
    [0.367322, 0.860646, -0.227968],
    [0.280085, 0.672501, 0.047413],
    [-0.01182, 0.04294, 0.968881],
  ],
  tritan: [
    [1.255528, -0.076749, -0.178779],
    [-0.078411, 0.930809, 0.147602],
    [0.004733, 0.691367, 0.3039],
  ],
};

function seen(rgb: readonly number[], eye: readonly (readonly number[])[]): number[] {
  const linear = rgb.map((part) =>
    part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4,
  );
  const [r, g, b] = eye.map((row) =>
    Math.max(0, row[0] * linear[0] + row[1] * linear[1] + row[2] * linear[2]),
  );
  const l = Math.cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
  const m = Math.cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
  const s = Math.cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
  return [
    0.2104542553 * l + 0.793617785 * m - 0.0040720468 * s,
    1.9779984951 * l - 2.428592205 * m + 0.4505937099 * s,
    0.0259040371 * l + 0.7827717662 * m - 0.808675766 * s,
  ];
}

test('hues of one depth are told apart by eyes of every kind', () => {
  for (const scheme of [kLight, kDark])
    for (const [name, eye] of Object.entries(kEyes))
      for (let one = 0; one < kHueCount; one++)
        for (let other = 0; other < one; other++) {
          const [a, b] = [one, other].map((hue) => seen(barRgb(hue, 0, scheme), eye));
          const apart = Math.hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
          assert.ok(apart > 0.05, `${name}: hues ${other} and ${one} are ${apart} apart`);
        }
});

test('the time under the pointer stays there while zooming, at every moment of the easing', () => {
  const view = new Viewport(0, 20e9);
  view.width = 1000;
  const held = view.time(300);
  view.zoom(0.1, 300);
  const begun = performance.now();
  for (const after of [20, 60, 100, 149, 160]) {
    view.advance(begun + after);
    assert.ok(Math.abs(view.x(held) - 300) < 0.01, `${view.x(held)} after ${after} ms`);
  }
  assert.equal(view.moving, false);
});

test('a view keeps to its trace, whatever is asked', () => {
  const view = new Viewport(0, 1e9);
  view.width = 1000;
  for (const [from, to] of [
    [-1e12, 1e12],
    [5e12, 6e12],
    [NaN, NaN],
    [3, 3],
    [Infinity, -Infinity],
  ]) {
    view.show(from, to, false);
    assert.ok(view.to - view.from >= 200 && view.to - view.from <= 1.03e9);
    assert.ok(view.to > 0 && view.from < 1e9);
  }
});

test('calm motion jumps at once', () => {
  const view = new Viewport(0, 1e9);
  view.calm = true;
  view.zoom(0.5, 0);
  assert.equal(view.moving, false);
});

const kTrace = madeTrace({ records: 20_000 });
const ids = (layout: LaneLayout) => layout.rows.map((row) => row.lane?.id ?? row.text);

test('I/O threads stand first, then the culprit, then the busiest; idle ones are folded', () => {
  const layout = new LaneLayout(kTrace);
  layout.arrange(firstChoice(), false);
  const rows = ids(layout);
  assert.deepEqual(rows.slice(0, 3), [0, 1, 2]);
  const busy = layout.rows.slice(3, -1).map((row) => row.lane!.busy);
  assert.deepEqual(
    busy,
    [...busy].sort((one, other) => other - one),
  );
  assert.match(String(rows[rows.length - 1]), /^\d+ idle threads, folded$/);
});

test('lanes are pinned, hidden, unfolded and grouped', () => {
  const layout = new LaneLayout(kTrace);
  const choice = { ...firstChoice(), pinned: [5], hidden: new Set([1]), idleShown: true };
  layout.arrange(choice, false);
  assert.deepEqual(ids(layout).slice(0, 2), [5, 0]);
  assert.ok(!ids(layout).includes(1));
  assert.ok(layout.rows.some((row) => row.lane && layout.isIdle(row.lane)));
  layout.arrange({ ...firstChoice(), grouping: 'processor' }, false);
  const rows = layout.rows.map((row) => row.group);
  const heading = rows.indexOf('processor 1');
  assert.ok(heading > rows.indexOf('processor 0'));
  assert.equal(layout.rows[heading + 1].lane!.processor, 1);
});

test('a group of threads has its heading, which closes it', () => {
  const layout = new LaneLayout(kTrace);
  const choice = { ...firstChoice(), grouping: 'driver' as const };
  layout.arrange(choice, false);
  const threads = layout.rows.filter((row) => row.lane?.kind === 'thread');
  const headings = layout.rows.filter((row) => row.group !== '');
  assert.deepEqual(
    new Set(headings.map((row) => row.group)),
    new Set(threads.map((row) => row.lane!.driver)),
  );
  for (const heading of headings) {
    const inside = threads.filter((row) => row.lane!.driver === heading.group);
    assert.match(heading.text, new RegExp(`^${heading.group} · ${inside.length} threads?$`));
    const below = layout.rows.slice(layout.rows.indexOf(heading) + 1).slice(0, inside.length);
    assert.deepEqual(below, inside);
  }
  choice.closed.add('PlexoEngine');
  layout.arrange(choice, false);
  const left = layout.rows.filter((row) => row.lane?.kind === 'thread');
  assert.deepEqual(
    left.map((row) => row.lane),
    threads.flatMap(({ lane }) => (lane!.driver === 'PlexoEngine' ? [] : [lane])),
  );
  assert.ok(left.length < threads.length);
  assert.ok(layout.rows.some((row) => row.group === 'PlexoEngine' && row.folded));
});

test('rows lie one below the other, and a place finds its row', () => {
  const layout = new LaneLayout(kTrace);
  layout.arrange(firstChoice(), true);
  let below = 0;
  for (const row of layout.rows) {
    assert.equal(row.top, below);
    below += row.height;
    assert.equal(layout.rowAt(row.top + row.height / 2), row);
  }
  assert.equal(layout.height, below);
});

test('dropouts of one cause and culprit are one finding', () => {
  assert.deepEqual(findingsOf(kTrace.dropouts), [[0, 1], [2]]);
});

test('a record on the screen and large enough stays where it is', async () => {
  const detail = await kTrace.detail(kTrace.dropouts[0].culpritRecord);
  const view = new Viewport(kTrace.begin, kTrace.end);
  view.width = 1000;
  const span = spanFor(view, detail)!;
  assert.ok(span.from < detail.call!.begin && span.to > detail.call!.end);
  view.show(span.from, span.to, false);
  assert.equal(spanFor(view, detail), null);
});

test('the fragment brings the same view back', () => {
  const shared = {
    from: 1_234_567,
    to: 9_876_543_210,
    record: 42,
    dropout: 2,
    words: 'pinSense & #1 ü',
    grouping: 'driver' as const,
    pinned: [3, 1],
    hidden: [7],
    folded: [2],
    closed: ['PlexoEngine', 'a, b & c'],
    idle: true,
    selection: [5, 6] as [number, number],
  };
  assert.deepEqual(readFragment(`#${writeFragment(shared)}`), shared);
});

test('a fragment without sense is left out', () => {
  const read = readFragment(
    '#from=abc&to=&record=1e999&dropout=-1&group=__proto__&pinned=1,x,,2&selection=1,2,3&%E0%A4',
  );
  const { from, to, record, dropout, selection } = read;
  assert.deepEqual([from, to, record, dropout, selection], Array(5).fill(null));
  assert.equal(read.grouping, 'thread');
  assert.deepEqual(read.pinned, [1, 2]);
});

test('the document lists the same keys', () => {
  const document = readFileSync('../../docs/timeline.md', 'utf8');
  const rows = kKeys.flatMap((group) => group.keys.map((key) => `| ${key.shown} | ${key.does} |`));
  assert.ok(document.includes(`|---|---|\n${rows.join('\n')}\n\n`), rows.join('\n'));
});

test('each key does one thing', () => {
  const all = kKeys.flatMap((group) => group.keys);
  for (const key of all)
    for (const one of key.keys) assert.equal(keyOf(one, key.shift ?? false), key);
  assert.equal(keyOf('q', false), null);
});
