// Draws what is on the screen, once a frame and only when something changed.
import { type LaneColumns, newLaneColumns } from '../columns';
import type { Cycles, RecordDetail, Trace } from '../trace';
import { BarPainter, paintPoints, type Surface } from './bars';
import { currentTheme, type Theme } from './colours';
import { paintCycles } from './cycles';
import { DenseRows } from './dense';
import type { Frame } from './frame';
import { Labels } from './labels';
import { depthHeight, depthTop, type LaneLayout, pointTop, type Row } from './lanes';
import { paintMinimap } from './minimap';
import { Ruler, spanText } from './ruler';
import type { State } from './state';
import type { Viewport } from './viewport';

const kText = 14; // CSS pixels of the page's text at size 1
const kManyDropouts = 40; // more of them on the screen are thinner, and paler across the lanes
const kWindow = 10; // CSS pixels of the minimap's window at least
const kFont = 'system-ui, "Segoe UI", "Liberation Sans", "DejaVu Sans", sans-serif';

// A lane on the screen and what it drew last.
export interface Shown {
  row: Row;
  readonly buffers: LaneColumns;
}

export class Drawing {
  readonly shown: Shown[] = []; // as many as were ever on the screen at once
  shownCount = 0;
  // Where the lanes are scrolled to and how much of them is seen, in layout pixels; asked of the page
  // once a change, because asking may cost a layout.
  scrolled = 0;
  seenHeight = 0;
  theme: Theme;
  private readonly painter: BarPainter;
  private readonly labels: Labels;
  private readonly cycleRows = new DenseRows();
  private readonly rulerPainter = new Ruler();
  private readonly lanes: Surface;
  private readonly ruler: Surface;
  private readonly minimap: Surface;
  private scheduled = false;
  private minimapStale = true;
  private spanShown = '';
  private readonly tick = (now: number) => this.draw(now);
  private readonly dark = matchMedia('(prefers-color-scheme: dark)');

  constructor(
    private readonly trace: Trace,
    private readonly frame: Frame,
    private readonly view: Viewport,
    private readonly layout: LaneLayout,
    private readonly state: State,
    private readonly drawn: () => void, // after each frame
  ) {
    this.labels = new Labels(trace.events);
    this.painter = new BarPainter(trace.events, this.labels);
    this.lanes = surfaceOf(frame.lanes);
    this.ruler = surfaceOf(frame.ruler);
    this.minimap = surfaceOf(frame.minimap);
    this.theme = currentTheme(this.dark.matches);
    this.dark.addEventListener('change', () => {
      this.theme = currentTheme(this.dark.matches);
      this.invalidate(true);
    });
    const watch = new ResizeObserver(() => this.resize());
    for (const canvas of [frame.lanes, frame.ruler, frame.minimap]) watch.observe(canvas);
    watch.observe(frame.scroller);
  }

  // Something changed; `all`: on the minimap too.
  invalidate(all = false): void {
    this.minimapStale ||= all;
    if (this.scheduled) return;
    this.scheduled = true;
    requestAnimationFrame(this.tick);
  }

  scroll(): void {
    this.scrolled = this.frame.scroller.scrollTop / this.view.size;
    this.invalidate();
  }

  // Sizes follow the page's; drawn at once, so that nothing flickers.
  resize(): void {
    this.frame.stage.style.height = `${this.frame.scroller.clientHeight}px`;
    const size = parseFloat(getComputedStyle(document.documentElement).fontSize) / kText;
    for (const surface of [this.lanes, this.ruler, this.minimap]) fit(surface, size);
    this.view.size = size;
    this.seenHeight = this.frame.scroller.clientHeight / size;
    this.scrolled = this.frame.scroller.scrollTop / size;
    this.view.width = Math.max(1, this.frame.lanes.clientWidth / size);
    this.minimapStale = true;
    this.draw(performance.now());
  }

  private draw(now: number): void {
    this.scheduled = false;
    if (this.view.advance(now)) this.invalidate();
    this.drawLanes();
    this.ruler.context.font = `${12 * this.ruler.ratio}px ${kFont}`;
    this.rulerPainter.paint(this.ruler, this.view, this.theme);
    this.drawRulerMarks();
    if (this.minimapStale) {
      this.minimapStale = false;
      paintMinimap(this.minimap, this.trace, this.state.matches?.time ?? null, this.theme);
    }
    this.moveWindow();
    this.drawn();
  }

  private drawLanes(): void {
    const { context, width, height, ratio } = this.lanes;
    const { theme, view, trace } = this;
    context.fillStyle = theme.paper;
    context.fillRect(0, 0, width, height);
    this.labels.use(context, `${12 * ratio}px ${kFont}`);
    const nsPerPixel = view.nsPerPixel / ratio; // device pixels
    this.shownCount = 0;
    for (const row of this.layout.rows) {
      const top = row.top - this.scrolled;
      if (top + row.height <= 0 || top * ratio >= height) continue;
      const below = Math.round((top + row.height) * ratio) - 1;
      context.fillStyle = theme.line;
      context.fillRect(0, below, width, 1);
      if (!row.lane) continue;
      const shown = (this.shown[this.shownCount] ??= { row, buffers: newLaneColumns() });
      this.shownCount++;
      shown.row = row;
      const { bars, points, cycles } = shown.buffers;
      const { id } = row.lane;
      cycles.count = 0;
      const exact = trace.bars(id, view.from, view.to, nsPerPixel, bars);
      if (!exact && bars.count === 0 && row.lane.kind === 'processor') this.sayReading(top + row.callsTop);
      trace.points(id, view.from, view.to, nsPerPixel, points);
      if (row.lane.kind === 'io' && !row.folded) {
        trace.cycles(id, view.from, view.to, nsPerPixel, cycles);
        paintCycles(this.lanes, view, top + row.stripTop, cycles, theme, this.cycleRows);
      }
      this.painter.paint(this.lanes, view, row, top + row.callsTop, bars, theme);
      paintPoints(this.lanes, view, row, top + row.callsTop, points, theme);
    }
    this.drawMeasured();
    this.outline(this.state.blamed, this.theme.red);
    this.outline(this.state.selected, this.theme.ink);
    this.drawDropouts();
  }

  private sayReading(top: number): void {
    const { context, ratio } = this.lanes;
    context.fillStyle = this.theme.dim;
    context.textBaseline = 'top';
    context.fillText('reading all records…', 8 * ratio, (top + 2) * ratio);
  }

  // Red lines across all lanes; those that share a pixel are one.
  private drawDropouts(): void {
    const { context, width, height, ratio } = this.lanes;
    const scale = ratio / this.view.nsPerPixel;
    const { dropouts } = this.trace;
    let seen = 0;
    for (let at = 0; at < dropouts.length; at++)
      if (dropouts[at].time >= this.view.from && dropouts[at].time <= this.view.to) seen++;
    const many = seen > kManyDropouts;
    const wide = Math.max(1, Math.round((many ? 1 : 2) * ratio));
    context.fillStyle = this.theme.red;
    context.globalAlpha = many ? 0.4 : 1;
    let last = -wide;
    for (const dropout of dropouts) {
      const x = Math.round((dropout.time - this.view.from) * scale) - (wide >> 1);
      if (x === last || x < -wide || x > width) continue;
      context.fillRect(x, 0, wide, height);
      last = x;
    }
    context.globalAlpha = 1;
  }

  private drawMeasured(): void {
    const span = this.state.measured;
    if (!span) return;
    const { context, width, height, ratio } = this.lanes;
    const scale = ratio / this.view.nsPerPixel;
    const left = Math.max(-4, Math.round((Math.min(span.from, span.to) - this.view.from) * scale));
    const right = Math.min(
      width + 4,
      Math.round((Math.max(span.from, span.to) - this.view.from) * scale),
    );
    context.fillStyle = this.theme.ink;
    context.globalAlpha = 0.1;
    context.fillRect(left, 0, right - left, height);
    context.globalAlpha = 1;
    const thin = Math.max(1, Math.round(ratio));
    context.fillRect(left, 0, thin, height);
    context.fillRect(right, 0, thin, height);
  }

  private outline(selected: RecordDetail | null, colour: string): void {
    const row = selected && this.layout.rowOf(selected.lane);
    if (!selected || !row) return;
    const { context, ratio, width } = this.lanes;
    const scale = ratio / this.view.nsPerPixel;
    const deep = selected.parents.length - (selected.call ? 0 : 1);
    const depth = Math.max(0, Math.min(deep, row.depths - 1));
    const begin = selected.call?.begin ?? selected.time;
    const end = selected.call?.end ?? selected.time;
    const thick = Math.max(2, Math.round(2 * ratio));
    const half = selected.call ? 0 : 7 * ratio;
    const left = Math.max(-8, Math.round((begin - this.view.from) * scale - half));
    const right = Math.min(
      width + 8,
      Math.max(left + 4, Math.round((end - this.view.from) * scale + half)),
    );
    const offset = selected.call ? depthTop(depth) : pointTop(depth) - half / ratio;
    const height = selected.call ? depthHeight(depth) * ratio : 2 * half;
    const top = Math.round((row.top - this.scrolled + row.callsTop + offset) * ratio);
    context.strokeStyle = colour;
    context.lineWidth = thick;
    context.strokeRect(left, top, right - left, Math.round(height));
  }

  // Flags of dropouts and ticks of matches, on the ruler's lower edge.
  private drawRulerMarks(): void {
    const { context, height, width, ratio } = this.ruler;
    const scale = ratio / this.view.nsPerPixel;
    const matches = this.state.matches?.time;
    if (matches) {
      context.fillStyle = this.theme.ink;
      const size = Math.round(2 * ratio);
      let last = -size;
      for (let at = firstAfter(matches, this.view.from); at < matches.length; at++) {
        if (matches[at] > this.view.to) break;
        const x = Math.round((matches[at] - this.view.from) * scale);
        if (x - last < size) continue;
        context.fillRect(x, height - 4 * size, size, 4 * size);
        last = x;
      }
    }
    const size = Math.round(7 * ratio);
    context.fillStyle = this.theme.red;
    context.beginPath();
    let last = -Infinity;
    for (const dropout of this.trace.dropouts) {
      const x = Math.round((dropout.time - this.view.from) * scale);
      if (x - last < 2 || x < -size || x > width + size) continue;
      context.moveTo(x - size, height - size);
      context.lineTo(x + size, height - size);
      context.lineTo(x, height);
      last = x;
    }
    context.fill();
  }

  private moveWindow(): void {
    const { trace, view, frame } = this;
    const span = Math.max(1, trace.end - trace.begin);
    const width = this.minimap.width / devicePixelRatio; // CSS pixels
    const left = Math.max(0, ((view.from - trace.begin) / span) * width);
    const right = Math.min(width, ((view.to - trace.begin) / span) * width);
    const wide = Math.max(kWindow, right - left);
    frame.minimapWindow.style.transform = `translateX(${(left + right - wide) / 2}px)`;
    frame.minimapWindow.style.width = `${wide}px`;
    const text = spanText(view);
    if (text !== this.spanShown) frame.spanText.textContent = this.spanShown = text;
  }

  // What lies under a place of the lanes, in layout pixels; null: nothing.
  hit(x: number, y: number): Hit | null {
    const below = y + this.scrolled;
    const row = this.layout.rowAt(below);
    if (!row?.lane) return null;
    const shown = this.shown.slice(0, this.shownCount).find((one) => one.row === row);
    if (!shown) return null;
    const inside = below - row.top;
    const time = this.view.time(x);
    if (inside < row.callsTop) return cycleAt(shown, time);
    const calls = inside - row.callsTop;
    const near = 6 * this.view.nsPerPixel;
    return pointAt(shown, time, calls, near) ?? barAt(shown, time, calls, this.view.nsPerPixel * 2);
  }
}

export interface Hit {
  readonly kind: 'bar' | 'point' | 'cycle';
  readonly shown: Shown;
  readonly at: number; // its place in the buffer
  readonly record: number;
}

function barAt(shown: Shown, time: number, y: number, near: number): Hit | null {
  const { bars } = shown.buffers;
  let found = -1;
  for (let at = 0; at < bars.count; at++) {
    const depth = bars.depth[at];
    if (y < depthTop(depth) || y > depthTop(depth) + depthHeight(depth)) continue;
    if (bars.begin[at] <= time && time <= Math.max(bars.end[at], bars.begin[at] + near)) found = at;
  }
  if (found < 0) return null;
  return { kind: 'bar', shown, at: found, record: bars.record[found] };
}

function pointAt(shown: Shown, time: number, y: number, near: number): Hit | null {
  const { points } = shown.buffers;
  let found = -1;
  let nearest = near;
  for (let at = 0; at < points.count; at++) {
    const depth = Math.min(points.depth[at], shown.row.depths - 1);
    const away = Math.abs(points.time[at] - time);
    if (away > nearest || Math.abs(y - pointTop(depth)) > 6) continue;
    nearest = away;
    found = at;
  }
  if (found < 0) return null;
  return { kind: 'point', shown, at: found, record: points.record[found] };
}

function cycleAt(shown: Shown, time: number): Hit | null {
  const { cycles } = shown.buffers;
  for (let at = cycles.count - 1; at >= 0; at--) {
    const begin = cycleBegin(cycles, at);
    if (begin > time) continue;
    return { kind: 'cycle', shown, at, record: cycles.record[at] };
  }
  return null;
}

function cycleBegin(cycles: Cycles, at: number): number {
  return Number.isNaN(cycles.due[at]) ? cycles.begin[at] : cycles.due[at];
}

function surfaceOf(canvas: HTMLCanvasElement): Surface {
  const context = canvas.getContext('2d', { alpha: false })!;
  return { context, width: 1, height: 1, ratio: 1 };
}

function fit(surface: Surface, size: number): void {
  const { canvas } = surface.context;
  surface.ratio = devicePixelRatio * size;
  surface.width = Math.max(1, Math.round(canvas.clientWidth * devicePixelRatio));
  surface.height = Math.max(1, Math.round(canvas.clientHeight * devicePixelRatio));
  if (canvas.width !== surface.width) canvas.width = surface.width;
  if (canvas.height !== surface.height) canvas.height = surface.height;
}

// The first place whose value is not below `least`; values ascend.
export function firstAfter(values: Float64Array, least: number): number {
  let low = 0;
  let high = values.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (values[middle] < least) low = middle + 1;
    else high = middle;
  }
  return low;
}
