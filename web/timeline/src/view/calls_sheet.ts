// The side panel's table of the current lane's calls on the screen.
import type { Trace } from '../trace';
import { button, data, element } from './dom';
import type { Drawing } from './drawing';
import { callTable } from './heads';
import type { Commands } from './state';

const kCalls = 200; // of the table

export class CallsSheet {
  constructor(
    private readonly place: HTMLElement,
    private readonly trace: Trace,
    private readonly drawing: Drawing,
    private readonly commands: Commands,
  ) {}

  fill(lane: number): void {
    const shown = this.drawing.shown
      .slice(0, this.drawing.shownCount)
      .find((one) => one.row.lane?.id === lane);
    if (!shown) {
      const text =
        'The current lane is not on the screen: choose one by its title, or with ↑ and ↓.';
      this.place.replaceChildren(element('p', { class: 'empty' }, text));
      return;
    }
    const made = callTable(this.trace.events, shown, kCalls, (method, record) =>
      button({ class: 'culprit' }, () => this.commands.select(record), data(method)),
    );
    this.place.replaceChildren(element('div', { class: 'wide' }, made));
  }
}
