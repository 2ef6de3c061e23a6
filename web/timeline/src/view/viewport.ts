// Which stretch of time is on the screen, and how it moves: at once under the pointer, eased where
// it jumps.

const kEase = 150; // ms
const kShortest = 200; // ns on the whole screen

export class Viewport {
  from: number;
  to: number;
  width = 1; // layout pixels
  size = 1; // CSS pixels a layout pixel: more on very wide screens, so that all stays readable
  calm = false; // no easing
  private toFrom: number;
  private toTo: number;
  private startFrom = 0;
  private startTo = 0;
  private started = -1; // when easing began, -1 while it rests

  // Times of the trace, ns: nothing before begin or after end is of interest.
  constructor(
    private readonly begin: number,
    private readonly end: number,
  ) {
    const margin = Math.max(100, (end - begin) * 0.01);
    this.from = this.toFrom = begin - margin;
    this.to = this.toTo = end + margin;
  }

  get nsPerPixel(): number {
    return (this.to - this.from) / this.width;
  }
  get targetFrom(): number {
    return this.toFrom;
  }
  get targetTo(): number {
    return this.toTo;
  }
  get moving(): boolean {
    return this.started >= 0;
  }

  x(time: number): number {
    return (time - this.from) / this.nsPerPixel;
  }
  time(x: number): number {
    return this.from + x * this.nsPerPixel;
  }

  whole(eased = true): void {
    const margin = Math.max(100, (this.end - this.begin) * 0.01);
    this.show(this.begin - margin, this.end + margin, eased);
  }

  // Moves with the pointer: what is under it stays there.
  pan(pixels: number): void {
    const time = pixels * this.nsPerPixel;
    this.show(this.from + time, this.to + time, false);
  }

  // A step earlier or later by keys, a share of the screen.
  step(share: number): void {
    const time = (this.toTo - this.toFrom) * share;
    this.show(this.toFrom + time, this.toTo + time);
  }

  // A factor below 1 shows less; the time at x stays at x.
  zoom(factor: number, x: number, eased = true): void {
    const held = this.time(x);
    const span = (this.toTo - this.toFrom) * factor;
    const share = x / this.width;
    this.show(held - span * share, held + span * (1 - share), eased);
  }

  show(from: number, to: number, eased = true): void {
    [this.toFrom, this.toTo] = this.kept(from, to);
    if (!eased || this.calm) {
      this.from = this.toFrom;
      this.to = this.toTo;
      this.started = -1;
      return;
    }
    this.startFrom = this.from;
    this.startTo = this.to;
    this.started = performance.now();
  }

  // Moves on to `now`; true while it has farther to go.
  advance(now: number): boolean {
    if (this.started < 0) return false;
    const part = Math.min(1, Math.max(0, (now - this.started) / kEase));
    const eased = 1 - (1 - part) ** 3;
    const span0 = this.startTo - this.startFrom;
    const span1 = this.toTo - this.toFrom;
    // The one time that both views show at the same place stays there; views of alike width slide.
    const share = (this.toFrom - this.startFrom) / (span0 - span1);
    if (part === 1) {
      this.from = this.toFrom;
      this.to = this.toTo;
    } else if (Number.isFinite(share) && Math.abs(share) < 50) {
      const held = this.startFrom + share * span0;
      const span = span0 * (span1 / span0) ** eased;
      this.from = held - share * span;
      this.to = this.from + span;
    } else {
      this.from = this.startFrom + (this.toFrom - this.startFrom) * eased;
      this.to = this.startTo + (this.toTo - this.startTo) * eased;
    }
    if (part === 1) this.started = -1;
    return this.started >= 0;
  }

  // No wider than the trace and its margin, no narrower than can be told apart, some trace in it.
  private kept(from: number, to: number): [number, number] {
    const whole = Math.max(kShortest, this.end - this.begin);
    let span = Math.max(kShortest, to - from);
    if (!Number.isFinite(span)) span = whole;
    let middle = (from + to) / 2;
    if (!Number.isFinite(middle)) middle = (this.begin + this.end) / 2;
    if (span >= whole * 1.02) {
      span = whole * 1.02;
      middle = (this.begin + this.end) / 2;
    }
    middle = Math.min(this.end, Math.max(this.begin, middle));
    return [middle - span / 2, middle + span / 2];
  }
}
