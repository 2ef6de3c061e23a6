// The list of dropouts: those with one cause and one culprit are one finding. The records that show
// the chosen one's cause stand below its moment.
import type { Dropout, Trace } from '../trace';
import { button, data, element, method } from './dom';
import type { Commands } from './state';
import { count, counted, duration, moment } from './units';

const kListed = 300; // buttons of a finding; keys reach the others
const kLine = 160; // characters of a piece of evidence

export class DropoutList {
  private readonly buttons = new Map<number, HTMLButtonElement>();
  private current: HTMLButtonElement | null = null;
  private evidence: HTMLElement | null = null;

  constructor(
    private readonly sheet: HTMLElement,
    private readonly trace: Trace,
    private readonly commands: Commands,
  ) {
    const { dropouts } = trace;
    if (dropouts.length === 0) {
      sheet.append(
        element(
          'p',
          { class: 'empty' },
          'There is no dropout in this trace: no OVERLOAD was recorded.',
        ),
      );
    } else {
      const often = dropouts.length === 1 ? 'once' : counted(dropouts.length, 'time');
      sheet.append(
        element('h2', {}, `The sound broke off ${often}`),
        element('p', {}, 'Choose a moment to see what happened there.'),
      );
      for (const finding of findingsOf(dropouts)) sheet.append(this.section(finding, dropouts));
    }
    if (trace.notes.length > 0) {
      const notes = element('ul', { class: 'notes' });
      for (const note of trace.notes) notes.append(element('li', {}, data(note, 1000)));
      sheet.append(element('h2', {}, 'About this trace'), notes);
    }
  }

  // -1: none.
  mark(index: number): void {
    this.current?.removeAttribute('aria-current');
    this.evidence?.remove();
    this.current = this.buttons.get(index) ?? null;
    if (!this.current) return;
    this.current.setAttribute('aria-current', 'true');
    this.evidence = this.evidenceOf(this.trace.dropouts[index]);
    this.current.after(this.evidence);
    const seen = this.sheet.getBoundingClientRect();
    const { top } = this.current.getBoundingClientRect();
    if (top >= seen.top && this.evidence.getBoundingClientRect().bottom <= seen.bottom) return;
    this.current.closest('.finding')!.scrollIntoView();
    this.current.scrollIntoView({ block: 'nearest' });
  }

  // Filled as the records arrive: their places stand from the start, so that nothing jumps.
  private evidenceOf(dropout: Dropout): HTMLElement {
    const list = element('ol', { class: 'evidence', 'aria-label': 'Its evidence (key e)' });
    for (const record of dropout.evidence) {
      const piece = button(
        { class: 'piece' },
        () => this.commands.reveal(record),
        `record ${count(record)}`,
      );
      list.append(element('li', {}, piece));
      void this.trace.detail(record).then((detail) => {
        const { name } = this.trace.lanes[detail.lane];
        piece.replaceChildren(
          element('span', {}, `${before(dropout.time - detail.time)} · `, data(name)),
          element('span', { class: 'text' }, kArrows[detail.qualifier] ?? '', method(detail.line, kLine)),
        );
      });
    }
    return list;
  }

  private section(finding: readonly number[], dropouts: readonly Dropout[]): HTMLElement {
    const first = dropouts[finding[0]];
    const list = element('ul', { class: 'moments' });
    for (const index of finding.slice(0, kListed)) {
      const dropout = dropouts[index];
      const made = button(
        { class: 'moment' },
        () => this.commands.dropout(index),
        element('strong', {}, moment(dropout.time, 1e5)),
        element('span', {}, dropout.lacking > 0 ? ` lacks ${duration(dropout.lacking)}` : ''),
      );
      this.buttons.set(index, made);
      list.append(element('li', {}, made));
    }
    const more = finding.length - kListed;
    if (more > 0) list.append(element('li', {}, `and ${counted(more, 'other')}: keys o and O`));
    const culprit =
      first.culpritRecord >= 0
        ? button(
            { class: 'culprit', title: 'Show this call (key c)' },
            () => this.commands.reveal(first.culpritRecord),
            method(first.culprit || 'the call that did it'),
          )
        : first.culprit
          ? data(first.culprit)
          : null;
    return element(
      'section',
      { class: 'finding' },
      element('h3', {}, sentence(first.meaning)),
      culprit && element('p', {}, culprit),
      element(
        'p',
        { class: 'certainty' },
        data(first.cause),
        ', ',
        data(first.certainty),
        finding.length > 1 ? `, ${counted(finding.length, 'time')}` : '',
      ),
      list,
    );
  }
}

const kArrows: Readonly<Record<number, string>> = { 1: '→ ', 2: '← ' }; // a start, an end

function before(ns: number): string {
  if (ns === 0) return 'then';
  return `${duration(Math.abs(ns))} ${ns > 0 ? 'before' : 'after'}`;
}

export function sentence(text: string): string {
  return `${text.charAt(0).toUpperCase()}${text.slice(1)}.`;
}

// Places of dropouts with the same cause and culprit, in the order of their first.
export function findingsOf(dropouts: readonly Dropout[]): number[][] {
  const findings = new Map<string, number[]>();
  dropouts.forEach((dropout, index) => {
    const key = JSON.stringify([dropout.cause, dropout.culprit, dropout.certainty]);
    const finding = findings.get(key);
    if (finding) finding.push(index);
    else findings.set(key, [index]);
  });
  return [...findings.values()];
}
