// The statistics of what was measured: one row an event, the one with the most time first.
import type { Lane, StatisticsRow, Trace } from '../trace';
import { button, data, element, table } from './dom';
import type { Commands, Span, State } from './state';
import { laneTitle } from './heads';
import { count, counted, duration, moment } from './units';

const kRows = 100;

export class StatisticsSheet {
  private asked = 0;
  private ofLane = false; // only the current lane's

  constructor(
    private readonly sheet: HTMLElement,
    private readonly trace: Trace,
    private readonly state: State,
    private readonly commands: Commands,
  ) {
    this.show(null);
  }

  show(span: Span | null): void {
    const asked = ++this.asked;
    if (!span) {
      this.sheet.replaceChildren(
        element('p', { class: 'empty' }, 'Nothing is measured: drag with Shift held, or press m.'),
        button({}, () => this.commands.measure(), 'Measure the screen'),
      );
      return;
    }
    const from = Math.min(span.from, span.to);
    const to = Math.max(span.from, span.to);
    const lane = this.ofLane ? this.thread() : null;
    void this.trace.statistics({ from, to, lanes: lane ? [lane.id] : null }).then((rows) => {
      if (asked !== this.asked) return;
      this.sheet.replaceChildren(
        element('h2', {}, duration(to - from)),
        element('p', {}, `${moment(from, 1e3)} to ${moment(to, 1e3)}`),
        this.laneSwitch(span),
        this.rows(rows),
      );
    });
  }

  // The current lane, unless it is a processor's.
  private thread(): Lane | null {
    const lane = this.trace.lanes[this.state.lane];
    return lane === undefined || lane.kind === 'processor' ? null : lane;
  }

  private laneSwitch(span: Span): HTMLElement {
    const lane = this.thread();
    const box = element('input', { type: 'checkbox' });
    box.checked = this.ofLane && lane !== null;
    box.disabled = lane === null;
    box.addEventListener('change', () => {
      this.ofLane = box.checked;
      this.show(span);
    });
    const name = lane === null ? 'the current thread' : laneTitle(lane);
    return element('p', {}, element('label', {}, box, ' only ', data(name)));
  }

  private rows(rows: readonly StatisticsRow[]): Node {
    if (rows.length === 0)
      return element('p', { class: 'empty' }, 'No call begins in this stretch.');
    const sorted = [...rows].sort((one, other) => other.total - one.total);
    const cells = sorted
      .slice(0, kRows)
      .map((row) => [
        button(
          { class: 'culprit', title: 'Show its longest call' },
          () => this.commands.reveal(row.longest),
          data(this.trace.events[row.event].method),
        ),
        duration(row.total),
        count(row.calls),
        row.failures ? element('span', { class: 'failed' }, count(row.failures)) : '',
        duration(row.self),
        duration(row.median),
        duration(row.max),
      ]);
    const heads = ['method', 'total', 'calls', 'failed', 'self', 'median', 'max'];
    const made = table(
      { class: 'numbers' },
      'Calls that begin in the measured stretch',
      heads,
      cells,
    );
    const wrapped = element('div', { class: 'wide' }, made);
    const more = sorted.length - kRows;
    if (more > 0) wrapped.append(element('p', {}, `and ${counted(more, 'event')} with less time`));
    return wrapped;
  }
}
