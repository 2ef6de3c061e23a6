// The ruler: whole steps in units a person says. Where the steps are short, each is counted from a
// round moment that is written out at the left.
import type { Surface } from './bars';
import type { Theme } from './colours';
import { duration, moment, roundStep } from './units';
import type { Viewport } from './viewport';

const kApart = 96; // CSS pixels between two labels at least
const kMostTexts = 4000;

export interface Ticks {
  readonly step: number; // ns between labels
  readonly base: number; // ns from which labels count, 0: from the beginning
}

export function ticksOf(from: number, nsPerPixel: number): Ticks {
  const step = roundStep(kApart * nsPerPixel);
  if (step >= 1e6) return { step, base: 0 };
  const period = step >= 1e3 ? 1e6 : 1e3;
  return { step, base: Math.floor(from / period) * period };
}

// "4.215 s", or "+120 µs" after a base.
export function tickText(time: number, step: number): string {
  if (step >= 1e6) return moment(time, step);
  const period = step >= 1e3 ? 1e6 : 1e3;
  const rest = Math.round(time - Math.floor(time / period) * period);
  if (rest === 0 || rest === period) return moment(time, period);
  return `+${period === 1e6 ? `${count3(rest / 1e3)} µs` : `${rest} ns`}`;
}

function count3(value: number): string {
  return Number(value.toFixed(1)).toString();
}

export class Ruler {
  private readonly texts = new Map<number, string>();
  private textStep = 0;

  paint(surface: Surface, view: Viewport, theme: Theme): void {
    const { context, width, height, ratio } = surface;
    context.fillStyle = theme.paper;
    context.fillRect(0, 0, width, height);
    const { step, base } = ticksOf(view.from, view.nsPerPixel);
    const scale = ratio / view.nsPerPixel;
    const tall = Math.round(8 * ratio);
    context.textBaseline = 'middle';
    context.fillStyle = theme.dim;
    const short = step / 5;
    const thin = Math.max(1, Math.round(ratio));
    for (let at = Math.floor(view.from / short); at * short < view.to; at++) {
      const long = at % 5 === 0;
      const x = Math.round((at * short - view.from) * scale);
      context.fillRect(x, height - (long ? tall : tall >> 1), thin, long ? tall : tall >> 1);
    }
    let clear = -Infinity;
    if (base > 0) {
      const text = this.textOf(base, step);
      context.fillStyle = theme.ink;
      const x = Math.round((base - view.from) * scale);
      const left = Math.max(4 * ratio, x + 4 * ratio);
      context.fillText(text, left, height / 2 - 2 * ratio);
      clear = left + context.measureText(text).width + 10 * ratio;
    }
    context.fillStyle = theme.dim;
    for (let at = Math.floor(view.from / step); at * step < view.to; at++) {
      const time = at * step;
      const x = Math.round((time - view.from) * scale) + 4 * ratio;
      if (x < Math.max(0, clear)) continue;
      context.fillText(this.textOf(time, step), x, height / 2 - 2 * ratio);
    }
  }

  private textOf(time: number, step: number): string {
    if (step !== this.textStep || this.texts.size > kMostTexts) this.texts.clear();
    this.textStep = step;
    let text = this.texts.get(time);
    if (text === undefined) this.texts.set(time, (text = tickText(time, step)));
    return text;
  }
}

// A moment as exact as the screen shows it, for the pointer.
export function pointedMoment(time: number, nsPerPixel: number): string {
  return moment(time, 10 ** Math.floor(Math.log10(Math.max(1, nsPerPixel))));
}

// How much of a span a person sees: "2.85 ms on the screen".
export function spanText(view: Viewport): string {
  return `${duration(view.targetTo - view.targetFrom)} on the screen`;
}
