// The list of dropouts: those with one cause and one culprit are one finding.
import type { Dropout, Trace } from '../trace';
import { button, data, element, method } from './dom';
import type { Commands } from './state';
import { counted, duration, moment } from './units';

const kListed = 300; // buttons of a finding; keys reach the others

export class DropoutList {
  private readonly buttons = new Map<number, HTMLButtonElement>();
  private current: HTMLButtonElement | null = null;

  constructor(
    sheet: HTMLElement,
    trace: Trace,
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

  mark(index: number): void {
    this.current?.removeAttribute('aria-current');
    this.current = this.buttons.get(index) ?? null;
    this.current?.setAttribute('aria-current', 'true');
    this.current?.scrollIntoView({ block: 'nearest' });
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
