// The page's bones: head, minimap, ruler, lanes and side panel, all empty.
import type { Trace } from '../trace';
import { button, data, element } from './dom';
import { kGroupings, type Grouping } from './lanes';
import type { Commands } from './state';
import { count, counted, duration, moment } from './units';

export interface Frame {
  readonly minimap: HTMLCanvasElement;
  readonly minimapWindow: HTMLElement;
  readonly spanText: HTMLElement;
  readonly ruler: HTMLCanvasElement;
  readonly scroller: HTMLElement;
  readonly track: HTMLElement; // as high as all lanes
  readonly stage: HTMLElement; // what of it is seen
  readonly heads: HTMLElement;
  readonly lanes: HTMLCanvasElement;
  readonly hairline: HTMLElement;
  readonly tip: HTMLElement;
  readonly grouping: HTMLSelectElement;
  readonly searchPlace: HTMLElement;
  readonly side: HTMLElement;
  readonly spoken: HTMLElement; // read out by screen readers when it changes
}

export function makeFrame(
  place: HTMLElement,
  trace: Trace,
  commands: Commands,
  about: () => void,
  regroup: (grouping: Grouping) => void,
): Frame {
  const frame: Frame = {
    minimap: element('canvas', { role: 'img', 'aria-label': minimapText(trace) }),
    minimapWindow: element('div', { class: 'window' }),
    spanText: element('span', { class: 'span-text' }),
    ruler: element('canvas', { 'aria-hidden': 'true' }),
    scroller: element('div', {
      class: 'scroller',
      tabindex: '0',
      role: 'region',
      'aria-label': 'Lanes. The question mark lists the keys.',
    }),
    track: element('div', { class: 'track' }),
    stage: element('div', { class: 'stage' }),
    heads: element('div', { class: 'heads' }),
    lanes: element('canvas', { 'aria-hidden': 'true' }),
    hairline: element('div', { class: 'hairline', hidden: '' }),
    tip: element('div', { class: 'tip', hidden: '' }),
    grouping: groupingSelect(regroup),
    searchPlace: element('div', { class: 'search', role: 'search' }),
    side: element('aside', { class: 'side', 'aria-label': 'Findings' }),
    spoken: element('div', { class: 'unseen', 'aria-live': 'polite' }),
  };
  frame.stage.append(frame.lanes, frame.heads, frame.hairline);
  frame.track.append(frame.stage);
  frame.scroller.append(frame.track);
  place.replaceChildren(
    head(trace, commands, about, frame),
    element(
      'main',
      {},
      element(
        'div',
        { class: 'chart' },
        element('div', { class: 'minimap' }, frame.minimap, frame.minimapWindow),
        element(
          'div',
          { class: 'ruler' },
          element('div', { class: 'gutter' }, frame.spanText),
          frame.ruler,
        ),
        frame.scroller,
      ),
      frame.side,
    ),
    frame.tip,
    frame.spoken,
  );
  return frame;
}

function head(trace: Trace, commands: Commands, about: () => void, frame: Frame): HTMLElement {
  const facts = [
    duration(trace.end - trace.begin),
    counted(trace.records, 'record'),
    counted(
      trace.lanes.filter((lane) => lane.kind === 'io' || lane.kind === 'thread').length,
      'thread',
    ),
  ];
  return element(
    'header',
    {},
    element(
      'div',
      { class: 'title' },
      element('h1', {}, data(trace.title)),
      element('p', {}, facts.join(' · ')),
    ),
    element(
      'div',
      { class: 'verdicts' },
      dropoutVerdict(trace, commands),
      failureVerdict(trace, commands),
    ),
    frame.searchPlace,
    element(
      'div',
      { class: 'tools' },
      frame.grouping,
      button({ title: 'Key 0' }, () => commands.whole(), 'Whole trace'),
      button({ title: 'Key ?' }, () => commands.help(), 'Keys'),
      button({}, about, 'About'),
    ),
  );
}

function dropoutVerdict(trace: Trace, commands: Commands): HTMLElement {
  const [first] = trace.dropouts;
  if (!first) return element('span', { class: 'verdict' }, 'no dropout in this trace');
  const text =
    trace.dropouts.length === 1
      ? `1 dropout, at ${moment(first.time, 1e6)}`
      : `${count(trace.dropouts.length)} dropouts, first at ${moment(first.time, 1e6)}`;
  return button(
    { class: 'verdict dropout', title: 'Go there (key o)' },
    () => commands.dropout(0),
    text,
  );
}

function failureVerdict(trace: Trace, commands: Commands): HTMLElement {
  let failures = 0;
  for (const some of trace.overview.failures) failures += some;
  if (failures === 0) return element('span', { class: 'verdict' }, 'no failure');
  return button(
    { class: 'verdict failure', title: 'Go to the next (key f)' },
    () => commands.nextFailure(1),
    counted(failures, 'failure'),
  );
}

function groupingSelect(regroup: (grouping: Grouping) => void): HTMLSelectElement {
  const select = element('select', { 'aria-label': 'Lanes by' });
  for (const grouping of kGroupings)
    select.append(element('option', { value: grouping }, `lanes by ${grouping}`));
  select.addEventListener('change', () => regroup(select.value as Grouping));
  return select;
}

function minimapText(trace: Trace): string {
  const many = trace.dropouts.length;
  return `The whole trace, ${duration(trace.end - trace.begin)}, ${many ? counted(many, 'dropout') : 'no dropout'}`;
}
