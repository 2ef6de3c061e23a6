// What stands beside the pointer: the time, and the call or cycle under it.
import type { Trace } from '../trace';
import { element } from './dom';
import type { Hit } from './drawing';
import { shown } from './text';
import { duration, percent } from './units';

export class Tip {
  private readonly time = element('b');
  private readonly call = element('bdi');
  private readonly more = element('span');

  constructor(
    private readonly place: HTMLElement,
    private readonly trace: Trace,
  ) {
    place.append(this.time, this.call, this.more);
  }

  // Beside the pointer, on the side where there is room.
  show(x: number, y: number, time: string, hit: Hit | null): void {
    this.time.textContent = time;
    this.call.textContent = hit ? this.nameOf(hit) : '';
    this.more.textContent = hit ? this.factsOf(hit) : '';
    this.place.hidden = false;
    const width = this.place.offsetWidth;
    const height = this.place.offsetHeight;
    const left = x + 14 + width > innerWidth ? x - 14 - width : x + 14;
    const top = y + 18 + height > innerHeight ? y - 10 - height : y + 18;
    this.place.style.transform = `translate(${Math.max(2, left)}px, ${Math.max(2, top)}px)`;
  }

  hide(): void {
    this.place.hidden = true;
  }

  private nameOf(hit: Hit): string {
    if (hit.kind === 'cycle') return 'cycle';
    const { bars, points } = hit.shown.buffers;
    const event = this.trace.events[(hit.kind === 'bar' ? bars : points).event[hit.at]];
    return shown(event.driver ? `${event.method} · ${event.driver}` : event.method, 160);
  }

  private factsOf(hit: Hit): string {
    const { bars, cycles } = hit.shown.buffers;
    if (hit.kind === 'bar') return duration(bars.end[hit.at] - bars.begin[hit.at]);
    if (hit.kind === 'point') return '';
    const due = cycles.due[hit.at];
    const budget = cycles.budget[hit.at];
    if (Number.isNaN(due)) return 'its due time is not known';
    return `used ${percent((cycles.end[hit.at] - due) / budget)} of ${duration(budget)}`;
  }
}
