// All that is known of a record: its line, its call, its values, the calls around it.
import { kCutOff, kFailure, kUnfinished, type RecordDetail, type Trace } from '../trace';
import { button, data, element, table } from './dom';
import { laneTitle } from './heads';
import type { Commands } from './state';
import { kLineLimit } from './text';
import { count, duration, moment } from './units';

const kParents = 12;

export function emptyDetails(sheet: HTMLElement): void {
  sheet.replaceChildren(
    element(
      'p',
      { class: 'empty' },
      'No record is selected: click a call or a point, or press Enter.',
    ),
  );
}

export function fillDetails(
  sheet: HTMLElement,
  trace: Trace,
  detail: RecordDetail,
  commands: Commands,
): void {
  const event = trace.events[detail.event];
  const facts: [string, Node | string][] = [];
  const { call } = detail;
  if (call) {
    facts.push(['takes', duration(call.end - call.begin)]);
    facts.push(['of it, itself', duration(call.self)]);
    facts.push(['from', moment(call.begin)], ['to', moment(call.end)]);
  } else {
    facts.push(['at', moment(detail.time)]);
  }
  facts.push(['driver', data(event.driver || 'no decoder')]);
  facts.push(['lane', data(laneTitle(trace.lanes[detail.lane]))]);
  facts.push(['processor', String(detail.processor)]);
  if (detail.object) facts.push(['object', data(detail.object)]);
  facts.push(['record, slot', `${count(detail.record)}, ${count(detail.slot)}`]);
  const list = element('dl');
  for (const [name, value] of facts) list.append(element('dt', {}, name), element('dd', {}, value));
  sheet.replaceChildren(
    element('h2', {}, data(event.method)),
    state(detail.flags),
    element('p', { class: 'line' }, data(detail.line, kLineLimit)),
    list,
    element(
      'p',
      {},
      button({ title: 'Key z' }, () => commands.zoomToSelected(), 'Zoom to it'),
    ),
    values(detail),
  );
  sheet.scrollTop = 0;
  if (detail.parents.length > 0) sheet.append(parents(trace, detail, commands));
}

function state(flags: number): HTMLElement {
  const words: string[] = [];
  if (flags & kFailure) words.push('failed');
  if (flags & kCutOff) words.push('cut off: its end is missing');
  if (flags & kUnfinished) words.push('unfinished where the trace ends');
  const failed = flags & kFailure ? 'verdict failure' : 'state';
  return element(
    'p',
    words.length ? {} : { hidden: '' },
    element('span', { class: failed }, words.join(', ')),
  );
}

function values(detail: RecordDetail): Node {
  if (detail.values.length === 0)
    return element('p', { class: 'empty' }, 'Its text has no values.');
  const rows = detail.values.map((value) => [data(value.name), data(value.text, 1000)]);
  return table({}, 'Values', ['value', 'reads'], rows);
}

// Filled as their details arrive: their places stand from the start, so that nothing jumps.
function parents(trace: Trace, detail: RecordDetail, commands: Commands): HTMLElement {
  const list = element('ol', { class: 'parents' });
  for (const record of detail.parents.slice(0, kParents)) {
    const name = button(
      { class: 'culprit' },
      () => commands.reveal(record),
      `record ${count(record)}`,
    );
    list.append(element('li', {}, name));
    void trace.detail(record).then((parent) => {
      const taken = parent.call ? `, ${duration(parent.call.end - parent.call.begin)}` : '';
      name.replaceChildren(data(trace.events[parent.event].method), taken);
    });
  }
  const more = detail.parents.length - kParents;
  if (more > 0) list.append(element('li', {}, `and ${count(more)} more`));
  return element('div', {}, element('h3', {}, 'Inside of'), list);
}
