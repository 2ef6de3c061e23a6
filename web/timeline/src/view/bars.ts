// Paints the calls and points of a lane: rectangles of one colour together, names where they fit,
// failures in amber.
import {
  type Bars,
  type EventKind,
  kCutOff,
  kFailure,
  kUnfinished,
  kWaiting,
  type Points,
} from '../trace';
import { hueOf, kHueCount, kShades, shadeOf, type Theme } from './colours';
import { DenseRows, kDense } from './dense';
import type { Labels } from './labels';
import { depthHeight, depthTop, kFullRows, kRow, pointTop, type Row } from './lanes';
import type { Viewport } from './viewport';

const kColours = kHueCount * kShades + 1; // and that of waiting
const kWait = kColours - 1;
const kGap = 3; // device pixels from which on neighbours are set apart
const kNamed = 26; // layout pixels from which on a bar may carry its method
const kMany = 0xffffffff; // instead of a bar: several that are too narrow to be told apart

// A canvas in device pixels, and how it stands to the layout.
export interface Surface {
  readonly context: CanvasRenderingContext2D;
  width: number; // device pixels
  height: number;
  ratio: number; // device pixels a layout pixel
}

export class BarPainter {
  private readonly hues: Uint8Array; // by event
  // Rectangles of a lane in device pixels, and their order by colour.
  private left = new Int32Array(4096);
  private right = new Int32Array(4096);
  private depth = new Uint16Array(4096);
  private colour = new Uint8Array(4096);
  private bar = new Uint32Array(4096);
  private order = new Uint32Array(4096);
  private readonly dense = new DenseRows();
  private readonly counts = new Uint32Array(kColours + 1);

  constructor(
    events: readonly EventKind[],
    private readonly labels: Labels,
  ) {
    this.hues = Uint8Array.from(events, (event) => hueOf(event.driver, event.family));
  }

  paint(surface: Surface, view: Viewport, row: Row, top: number, bars: Bars, theme: Theme): void {
    const rectangles = this.place(surface, view, row, bars);
    if (rectangles < kDense) this.fill(surface, rectangles, top, theme);
    else this.fillDense(surface, rectangles, top, row.depths, theme);
    this.mark(surface, view, row, top, bars, theme);
    this.name(surface, rectangles, top, bars, theme);
  }

  // Bars to rectangles; what touches its neighbour in the same colour becomes one with it, as long
  // as both are too narrow to be told apart.
  private place(surface: Surface, view: Viewport, row: Row, bars: Bars): number {
    if (this.left.length < bars.count) this.grow(bars.count);
    const scale = surface.ratio / view.nsPerPixel;
    const edge = surface.width + 8;
    let placed = 0;
    for (let at = 0; at < bars.count; at++) {
      const depth = bars.depth[at];
      if (depth >= row.depths) continue;
      const left = Math.max(-8, Math.round((bars.begin[at] - view.from) * scale));
      let right = Math.min(edge, Math.round((bars.end[at] - view.from) * scale));
      if (right <= left) right = left + 1;
      if (left >= edge || right < 0) continue;
      const waits = (bars.flags[at] & kWaiting) !== 0;
      const colour = waits ? kWait : this.hues[bars.event[at]] * kShades + shadeOf(depth);
      const last = placed - 1;
      if (
        last >= 0 &&
        right - left < kGap &&
        this.colour[last] === colour &&
        this.depth[last] === depth &&
        left <= this.right[last] &&
        this.bar[last] === kMany
      ) {
        if (right > this.right[last]) this.right[last] = right;
        continue;
      }
      this.left[placed] = left;
      this.right[placed] = right;
      this.depth[placed] = depth;
      this.colour[placed] = colour;
      this.bar[placed] = right - left < kGap ? kMany : at;
      placed++;
    }
    return placed;
  }

  private sortByColour(rectangles: number): void {
    const counts = this.counts;
    counts.fill(0);
    for (let at = 0; at < rectangles; at++) counts[this.colour[at] + 1]++;
    for (let colour = 0; colour < kColours; colour++) counts[colour + 1] += counts[colour];
    for (let at = 0; at < rectangles; at++) this.order[counts[this.colour[at]]++] = at;
  }

  private fill(surface: Surface, rectangles: number, top: number, theme: Theme): void {
    const { context } = surface;
    this.sortByColour(rectangles);
    let colour = -1;
    for (let place = 0; place < rectangles; place++) {
      const at = this.order[place];
      if (this.colour[at] !== colour) {
        colour = this.colour[at];
        context.fillStyle = colourOf(theme, colour);
      }
      const { y, height } = rowOf(surface, top, this.depth[at]);
      context.fillRect(this.left[at], y, this.right[at] - this.left[at] - this.gap(at), height);
    }
  }

  private fillDense(
    surface: Surface,
    rectangles: number,
    top: number,
    depths: number,
    theme: Theme,
  ): void {
    const { dense } = this;
    dense.begin(surface.width, depths, theme.paper);
    const words = Array.from({ length: kColours }, (_, colour) =>
      dense.wordOf(colourOf(theme, colour)),
    );
    let deepest = 0;
    for (let at = 0; at < rectangles; at++) {
      const depth = this.depth[at];
      if (depth > deepest) deepest = depth;
      dense.put(depth, this.left[at], this.right[at] - this.gap(at), words[this.colour[at]]);
    }
    dense.end(surface);
    for (let depth = 0; depth <= deepest; depth++) {
      const { y, height } = rowOf(surface, top, depth);
      dense.stretch(surface, depth, y, height);
    }
  }

  private gap(at: number): number {
    return this.bar[at] === kMany ? 0 : 1;
  }

  // Failures underlined in amber, wide enough to be seen at any zoom; calls without an end of their
  // own lose a corner at the right.
  private mark(
    surface: Surface,
    view: Viewport,
    row: Row,
    top: number,
    bars: Bars,
    theme: Theme,
  ): void {
    const { context, ratio } = surface;
    const scale = ratio / view.nsPerPixel;
    const least = Math.round(4 * ratio);
    const thick = Math.max(2, Math.round(3 * ratio));
    const corner = Math.round(6 * ratio);
    for (let at = 0; at < bars.count; at++) {
      const flags = bars.flags[at];
      if ((flags & (kFailure | kCutOff | kUnfinished)) === 0 || bars.depth[at] >= row.depths)
        continue;
      const left = Math.max(-least, Math.round((bars.begin[at] - view.from) * scale));
      const right = Math.min(
        surface.width + corner,
        Math.max(left + least, Math.round((bars.end[at] - view.from) * scale) - 1),
      );
      const bottom = Math.round(
        (top + depthTop(bars.depth[at]) + depthHeight(bars.depth[at])) * ratio,
      );
      if ((flags & kFailure) !== 0) {
        context.fillStyle = theme.amber;
        context.fillRect(left, bottom - thick, right - left, thick);
      }
      if ((flags & (kCutOff | kUnfinished)) !== 0 && right - left > 2 * corner) {
        context.fillStyle = theme.paper;
        context.beginPath();
        context.moveTo(right + 1, bottom - thick - corner);
        context.lineTo(right + 1, bottom);
        context.lineTo(right - corner, bottom);
        context.fill();
      }
    }
  }

  private name(surface: Surface, rectangles: number, top: number, bars: Bars, theme: Theme): void {
    const { context, ratio } = surface;
    const least = kNamed * ratio;
    const padding = 4 * ratio;
    context.fillStyle = theme.barInk;
    context.textBaseline = 'middle';
    for (let at = 0; at < rectangles; at++) {
      if (this.bar[at] === kMany || this.depth[at] >= kFullRows) continue;
      if (this.right[at] - this.left[at] < least) continue;
      const left = Math.max(0, this.left[at]);
      const room = Math.min(surface.width, this.right[at]) - left - 2 * padding;
      if (room < least - 2 * padding) continue;
      const label = this.labels.fitting(context, bars.event[this.bar[at]], room);
      if (label === '') continue;
      const y = (top + depthTop(this.depth[at]) + kRow / 2 - 1.5) * ratio;
      context.fillText(label, left + padding, Math.round(y));
    }
  }

  private grow(least: number): void {
    const size = Math.max(least, this.left.length * 2);
    this.left = new Int32Array(size);
    this.right = new Int32Array(size);
    this.depth = new Uint16Array(size);
    this.colour = new Uint8Array(size);
    this.bar = new Uint32Array(size);
    this.order = new Uint32Array(size);
  }
}

function colourOf(theme: Theme, colour: number): string {
  return colour === kWait ? theme.faint : theme.bars[colour];
}

// Device pixels of a depth.
function rowOf({ ratio }: Surface, top: number, depth: number): { y: number; height: number } {
  return {
    y: Math.round((top + depthTop(depth)) * ratio),
    height: Math.max(1, Math.round(depthHeight(depth) * ratio)),
  };
}

const kApart = 11; // layout pixels between two lozenges; nearer points are ticks

// Points stand on the call around them: faint ticks where they crowd, else lozenges, larger and
// amber where they failed.
export function paintPoints(
  surface: Surface,
  view: Viewport,
  row: Row,
  top: number,
  points: Points,
  theme: Theme,
): void {
  const { context, ratio } = surface;
  const scale = ratio / view.nsPerPixel;
  for (let kind = 0; kind < 3; kind++) {
    const failed = kind === 2;
    const size = (failed ? 5 : 3.5) * ratio;
    context.fillStyle = failed ? theme.amber : theme.ink;
    context.globalAlpha = kind === 0 ? 0.45 : 1;
    context.beginPath();
    let last = -Infinity;
    for (let at = 0; at < points.count; at++) {
      if (((points.flags[at] & kFailure) !== 0) !== failed) continue;
      const depth = Math.min(points.depth[at], row.depths - 1);
      const x = Math.round((points.time[at] - view.from) * scale);
      if (x < -size || x > surface.width + size) continue;
      const y = Math.round((top + pointTop(depth)) * ratio);
      const crowded = !failed && x - last < kApart * ratio;
      if (crowded && x - last < 3 * ratio) continue;
      last = x;
      if (crowded && kind === 0) {
        context.rect(x, y - size / 2, ratio, size);
      } else if (!crowded && kind > 0) {
        context.moveTo(x, y - size);
        context.lineTo(x + size, y);
        context.lineTo(x, y + size);
        context.lineTo(x - size, y);
      }
    }
    context.fill();
  }
}
