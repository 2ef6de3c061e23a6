// The view in the address's fragment: what a link must carry to bring the same picture back. What a
// fragment says that makes no sense is left out.
import { type Grouping, kGroupings, type LaneChoice } from './lanes';
import type { State } from './state';
import type { Viewport } from './viewport';

export interface Shared {
  from: number | null;
  to: number | null;
  record: number | null;
  dropout: number | null; // counted from 0
  words: string;
  grouping: Grouping;
  pinned: number[];
  hidden: number[];
  folded: number[];
  closed: string[]; // groups
  idle: boolean;
  selection: [number, number] | null;
}

export function readFragment(fragment: string): Shared {
  const fields = new URLSearchParams(fragment.replace(/^#/, ''));
  const selection = numbers(fields.get('selection'));
  const grouping = kGroupings.find((one) => one === fields.get('group'));
  return {
    from: number(fields.get('from')),
    to: number(fields.get('to')),
    record: place(fields.get('record')),
    dropout: place(fields.get('dropout')),
    words: fields.get('search') ?? '',
    grouping: grouping ?? 'thread',
    pinned: numbers(fields.get('pinned')),
    hidden: numbers(fields.get('hidden')),
    folded: numbers(fields.get('folded')),
    closed: fields.getAll('closed'),
    idle: fields.get('idle') === 'shown',
    selection: selection.length === 2 ? [selection[0], selection[1]] : null,
  };
}

export function writeFragment(view: Shared): string {
  const fields = new URLSearchParams();
  if (view.from !== null && view.to !== null) {
    fields.set('from', String(Math.round(view.from)));
    fields.set('to', String(Math.round(view.to)));
  }
  if (view.record !== null) fields.set('record', String(view.record));
  if (view.dropout !== null) fields.set('dropout', String(view.dropout));
  if (view.words) fields.set('search', view.words);
  if (view.grouping !== 'thread') fields.set('group', view.grouping);
  if (view.pinned.length) fields.set('pinned', view.pinned.join(','));
  if (view.hidden.length) fields.set('hidden', view.hidden.join(','));
  if (view.folded.length) fields.set('folded', view.folded.join(','));
  for (const group of view.closed) fields.append('closed', group);
  if (view.idle) fields.set('idle', 'shown');
  if (view.selection) fields.set('selection', view.selection.map(Math.round).join(','));
  return fields.toString().replaceAll('%2C', ',');
}

// Of the page as it stands, or will once easing is over.
export function fragmentOf(state: State, view: Viewport): string {
  const { choice, selected, dropout, measured, words } = state;
  return writeFragment({
    from: view.targetFrom,
    to: view.targetTo,
    record: selected?.record ?? null,
    dropout: dropout < 0 ? null : dropout,
    words,
    grouping: choice.grouping,
    pinned: choice.pinned,
    hidden: [...choice.hidden],
    folded: [...choice.folded],
    closed: [...choice.closed],
    idle: choice.idleShown,
    selection: measured && [measured.from, measured.to],
  });
}

// Without lanes that the trace does not have.
export function choiceOf(shared: Shared, lanes: number): LaneChoice {
  const known = (ids: readonly number[]) =>
    ids.filter((id) => Number.isInteger(id) && id >= 0 && id < lanes);
  return {
    grouping: shared.grouping,
    pinned: known(shared.pinned),
    hidden: new Set(known(shared.hidden)),
    folded: new Set(known(shared.folded)),
    closed: new Set(shared.closed),
    idleShown: shared.idle,
  };
}

function number(text: string | null): number | null {
  if (text === null || text.trim() === '') return null;
  const value = Number(text);
  return Number.isFinite(value) ? value : null;
}

// A place in a list.
function place(text: string | null): number | null {
  const value = number(text);
  return value !== null && Number.isInteger(value) && value >= 0 ? value : null;
}

function numbers(text: string | null): number[] {
  return (text ?? '')
    .split(',')
    .map(number)
    .filter((value) => value !== null);
}
