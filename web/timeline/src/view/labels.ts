// Names on bars: how wide each is and how it reads cut at the end, worked out once a name and kept.
import type { EventKind } from '../trace';
import { kNameLimit, shown } from './text';

const kShortest = 3; // fewer letters and the dots say nothing

export class Labels {
  private widths: (Float32Array | null)[] = []; // of the first n letters, by event
  private cuts: (string | null)[][] = [];
  private names: string[];
  private font = '';

  constructor(events: readonly EventKind[]) {
    this.names = events.map((event) => shown(event.method, kNameLimit));
  }

  // To be called before a frame: another font needs other widths.
  use(context: CanvasRenderingContext2D, font: string): void {
    context.font = font;
    if (font === this.font) return;
    this.font = font;
    this.widths = this.names.map(() => null);
    this.cuts = this.names.map(() => []);
  }

  // The event's method, or as much of it as `room` pixels hold; '' where that is nothing.
  fitting(context: CanvasRenderingContext2D, event: number, room: number): string {
    const name = this.names[event];
    const widths = (this.widths[event] ??= prefixWidths(context, name));
    const last = widths.length - 1;
    if (widths[last] <= room) return name;
    let letters = last - 1;
    while (letters > 0 && widths[letters] + widths[0] > room) letters--;
    if (letters < kShortest) return '';
    return (this.cuts[event][letters] ??= `${name.slice(0, letters)}…`);
  }
}

// Width of the first n letters at n; at 0, where it would be nothing, that of the dots.
function prefixWidths(context: CanvasRenderingContext2D, name: string): Float32Array {
  const widths = new Float32Array(name.length + 1);
  for (let letters = 1; letters <= name.length; letters++)
    widths[letters] = context.measureText(name.slice(0, letters)).width;
  widths[0] = context.measureText('…').width;
  return widths;
}
