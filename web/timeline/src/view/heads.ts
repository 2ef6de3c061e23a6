// The lanes' titles with their buttons, and beside each lane's picture a table of the same calls for
// those who do not see it. Only lanes on the screen have them.
import { type EventKind, kFailure, kMerged, type Lane, type Trace } from '../trace';
import { button, data, element, table } from './dom';
import type { Drawing, Shown } from './drawing';
import type { Frame } from './frame';
import type { LaneLayout, Row } from './lanes';
import type { Commands, State } from './state';
import { shown as safe } from './text';
import { counted, duration, moment, percent } from './units';
import type { Viewport } from './viewport';

const kTold = 10; // calls of a lane's table
const kSettle = 400; // ms without a change, then the tables follow

interface Head {
  readonly section: HTMLElement;
  readonly table: HTMLElement;
  readonly row: Row;
  top: number;
  seen: number; // the frame it was last on the screen
}

export class Heads {
  private heads = new Map<number | string, Head>();
  private timer = 0;
  private frames = 0;

  constructor(
    private readonly trace: Trace,
    private readonly frame: Frame,
    private readonly view: Viewport,
    private readonly layout: LaneLayout,
    private readonly state: State,
    private readonly commands: Commands,
    private readonly choose: (lane: number) => void,
  ) {}

  // Moves the titles with the lanes: in the same frame, so that neither runs ahead.
  follow(drawing: Drawing): void {
    const { size } = this.view;
    const { scrolled, seenHeight } = drawing;
    this.frames++;
    const focused = this.focusedButton();
    let before: Element | null = null;
    for (const row of this.layout.rows) {
      if (row.top + row.height <= scrolled || row.top >= scrolled + seenHeight) continue;
      const head = this.headOf(row);
      head.seen = this.frames;
      this.place(head.section, before);
      before = head.section;
      const top = (row.top - scrolled) * size;
      if (head.top !== top) head.section.style.transform = `translateY(${top}px)`;
      head.top = top;
      head.section.classList.toggle(
        'current',
        row.lane !== null && row.lane.id === this.state.lane,
      );
    }
    for (const [key, head] of this.heads) {
      if (head.seen === this.frames) continue;
      head.section.remove();
      this.heads.delete(key);
    }
    if (focused && document.activeElement === document.body)
      this.heads.get(focused.key)?.section.querySelectorAll('button')[focused.at]?.focus();
    window.clearTimeout(this.timer);
    this.timer = window.setTimeout(() => this.tell(drawing), kSettle);
  }

  // The button with the focus, so that it keeps it where its title is made anew or moved.
  private focusedButton(): { key: number | string; at: number } | null {
    const active = document.activeElement;
    if (!active || !this.frame.heads.contains(active)) return null;
    for (const [key, { section }] of this.heads) {
      const at = [...section.querySelectorAll('button')].findIndex((one) => one === active);
      if (at >= 0) return { key, at };
    }
    return null;
  }

  // Titles are read in the order in which they are seen.
  private place(section: HTMLElement, before: Element | null): void {
    if (section.isConnected && section.previousElementSibling === before) return;
    if (before) before.after(section);
    else this.frame.heads.prepend(section);
  }

  // A row that was arranged anew gets a new title.
  private headOf(row: Row): Head {
    const key = row.lane ? row.lane.id : row.text;
    const old = this.heads.get(key);
    if (old?.row === row) return old;
    const head = this.make(row);
    this.heads.set(key, head);
    old?.section.remove();
    return head;
  }

  private make(row: Row): Head {
    const place = element('div', { class: 'unseen' });
    const section = row.lane ? this.laneSection(row, row.lane, place) : this.headingSection(row);
    section.style.height = `${row.height * this.view.size}px`;
    return { section, table: place, row, top: NaN, seen: 0 };
  }

  private headingSection(row: Row): HTMLElement {
    const title = row.idle ? { title: 'Key l' } : {};
    const fold = () => (row.idle ? this.commands.idle() : this.commands.foldGroup(row.group));
    return element(
      'div',
      { class: 'heading' },
      button(
        { 'aria-expanded': String(!row.folded), ...title },
        fold,
        `${row.folded ? '▸' : '▾'} `,
        data(row.text),
      ),
    );
  }

  private laneSection(row: Row, lane: Lane, place: HTMLElement): HTMLElement {
    const title = laneTitle(lane);
    const pinned = this.state.choice.pinned.includes(lane.id);
    const tool = (text: string, key: string, act: () => void) =>
      button(
        { title: `${text} this lane (key ${key})`, 'aria-label': `${text} ${safe(title)}` },
        act,
        text,
      );
    return element(
      'section',
      { class: `lane ${lane.kind}${row.folded ? ' folded' : ''}`, 'aria-label': safe(title) },
      element(
        'div',
        { class: 'lane-head' },
        button({ class: 'lane-name' }, () => this.choose(lane.id), data(title)),
        element('span', { class: 'lane-facts' }, data(laneFacts(this.trace, lane))),
        element(
          'span',
          { class: 'lane-tools' },
          tool(row.folded ? 'unfold' : 'fold', 'space', () => this.commands.fold(lane.id)),
          tool(pinned ? 'unpin' : 'pin', 'p', () => this.commands.pin(lane.id)),
          tool('hide', 'x', () => this.commands.hide(lane.id)),
        ),
      ),
      place,
    );
  }

  private tell(drawing: Drawing): void {
    for (let at = 0; at < drawing.shownCount; at++) {
      const shown = drawing.shown[at];
      const lane = shown.row.lane!;
      const head = this.heads.get(lane.id);
      head?.table.replaceChildren(callTable(this.trace.events, shown, kTold, data));
    }
  }
}

export function laneTitle(lane: Lane): string {
  return lane.kind === 'io' ? `I/O ${lane.name}` : lane.name;
}

function laneFacts(trace: Trace, lane: Lane): string {
  if (lane.kind === 'processor') return 'what ran on it';
  const busy = percent(lane.busy / Math.max(1, trace.end - trace.begin));
  return [`${busy} busy`, lane.driver].filter(Boolean).join(' · ');
}

// The longest calls of a lane on the screen. `tell` makes what stands for the call: text or a button.
export function callTable(
  events: readonly EventKind[],
  shown: Shown,
  most: number,
  tell: (method: string, record: number) => Node,
): HTMLTableElement {
  const { bars } = shown.buffers;
  const places = Array.from({ length: bars.count }, (_, at) => at).filter(
    (at) => (bars.flags[at] & kMerged) === 0,
  );
  places.sort((one, other) => lengthOf(bars, other) - lengthOf(bars, one));
  const told = places.slice(0, most);
  const rows = told.map((at) => {
    const event = events[bars.event[at]];
    return [
      tell(event.method, bars.record[at]),
      duration(lengthOf(bars, at)),
      moment(bars.begin[at], 1e3),
      data(event.driver),
      (bars.flags[at] & kFailure) !== 0 ? 'failed' : '',
    ];
  });
  const title = safe(laneTitle(shown.row.lane!));
  const which = told.length < places.length ? `the longest ${told.length} of ` : '';
  const caption = `${title}: ${which}${counted(places.length, 'call')} on the screen`;
  return table({}, caption, ['method', 'takes', 'begins', 'driver', 'result'], rows);
}

function lengthOf(bars: Shown['buffers']['bars'], at: number): number {
  return bars.end[at] - bars.begin[at];
}
