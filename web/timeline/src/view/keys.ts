// What each key does: one table for the keyboard, the help and the document.
import type { Commands } from './state';

export interface Key {
  readonly keys: readonly string[]; // KeyboardEvent.key; with Shift where it says so
  readonly shift?: boolean; // for keys that are no letters
  readonly shown: string;
  readonly does: string;
  act(page: Commands, lane: number): void;
}

export interface KeyGroup {
  readonly title: string;
  readonly keys: readonly Key[];
}

const kPan = 0.2; // of the screen
const kZoom = 0.6;

export const kKeys: readonly KeyGroup[] = [
  {
    title: 'Find what went wrong',
    keys: [
      { keys: ['o'], shown: 'o', does: 'the next dropout and its neighbourhood', act: (page) => page.nextDropout(1) },
      { keys: ['O'], shown: 'O', does: 'the dropout before', act: (page) => page.nextDropout(-1) },
      { keys: ['c'], shown: 'c', does: 'the call that caused it', act: (page) => page.culprit() },
      { keys: ['e'], shown: 'e', does: 'the next record of its evidence', act: (page) => page.evidence(1) },
      { keys: ['E'], shown: 'E', does: 'the record of its evidence before', act: (page) => page.evidence(-1) },
      { keys: ['f'], shown: 'f', does: 'the next failure', act: (page) => page.nextFailure(1) },
      { keys: ['F'], shown: 'F', does: 'the failure before', act: (page) => page.nextFailure(-1) },
      { keys: ['/'], shown: '/', does: 'search names and texts; Enter goes to a match', act: (page) => page.startSearch() },
      { keys: ['n'], shown: 'n', does: 'the next match', act: (page) => page.nextMatch(1) },
      { keys: ['N'], shown: 'N', does: 'the match before', act: (page) => page.nextMatch(-1) },
    ],
  },
  {
    title: 'Move',
    keys: [
      { keys: ['w', '+', '='], shown: 'w or +', does: 'closer', act: (page) => page.zoom(kZoom) },
      { keys: ['s', '-'], shown: 's or -', does: 'farther', act: (page) => page.zoom(1 / kZoom) },
      { keys: ['a', 'ArrowLeft'], shown: 'a or ←', does: 'earlier', act: (page) => page.move(-kPan) },
      { keys: ['d', 'ArrowRight'], shown: 'd or →', does: 'later', act: (page) => page.move(kPan) },
      { keys: ['ArrowUp'], shown: '↑', does: 'the lane above', act: (page) => page.nextLane(-1) },
      { keys: ['ArrowDown'], shown: '↓', does: 'the lane below', act: (page) => page.nextLane(1) },
      { keys: ['PageUp'], shown: 'Page Up', does: 'a screen of lanes up', act: (page) => page.scroll(-1) },
      { keys: ['PageDown'], shown: 'Page Down', does: 'a screen of lanes down', act: (page) => page.scroll(1) },
      { keys: ['Home'], shown: 'Home', does: 'where the trace begins', act: (page) => page.edge(false) },
      { keys: ['End'], shown: 'End', does: 'where the trace ends', act: (page) => page.edge(true) },
      { keys: ['0'], shown: '0', does: 'the whole trace', act: (page) => page.whole() },
      { keys: ['z'], shown: 'z', does: 'zoom to the selected call, or to what is measured', act: (page) => page.zoomToSelected() },
    ],
  },
  {
    title: 'Look at calls',
    keys: [
      { keys: ['Enter', 'j'], shown: 'j or Enter', does: 'the next call of the lane, at the same depth', act: (page) => page.nextCall(1) },
      { keys: ['k'], shown: 'k', does: 'the call before', act: (page) => page.nextCall(-1) },
      { keys: ['u'], shown: 'u', does: 'the call around it', act: (page) => page.parent() },
      { keys: ['i'], shown: 'i', does: 'the first call inside it', act: (page) => page.child() },
      { keys: ['m'], shown: 'm', does: 'measure the selected call, or what is on the screen', act: (page) => page.measure() },
      { keys: ['ArrowLeft'], shift: true, shown: 'Shift ←', does: 'the measured stretch ends earlier', act: (page) => page.stretch(-0.02) },
      { keys: ['ArrowRight'], shift: true, shown: 'Shift →', does: 'the measured stretch ends later', act: (page) => page.stretch(0.02) },
    ],
  },
  {
    title: 'Arrange lanes',
    keys: [
      { keys: [' '], shown: 'Space', does: 'fold or unfold the lane', act: (page, lane) => page.fold(lane) },
      { keys: ['p'], shown: 'p', does: 'pin the lane to the top, or unpin it', act: (page, lane) => page.pin(lane) },
      { keys: ['x'], shown: 'x', does: 'hide the lane', act: (page, lane) => page.hide(lane) },
      { keys: ['X'], shown: 'X', does: 'show all hidden lanes', act: (page) => page.showHidden() },
      { keys: ['l'], shown: 'l', does: 'show or fold the idle threads', act: (page) => page.idle() },
      { keys: ['g'], shown: 'g', does: 'lanes by thread, processor or driver', act: (page) => page.group() },
    ],
  },
  {
    title: 'Panels',
    keys: [
      { keys: ['1'], shown: '1', does: 'dropouts', act: (page) => page.panel(0) },
      { keys: ['2'], shown: '2', does: 'the selected record', act: (page) => page.panel(1) },
      { keys: ['3'], shown: '3', does: 'statistics of what is measured', act: (page) => page.panel(2) },
      { keys: ['4', 't'], shown: '4 or t', does: "a table of the lane's calls on the screen", act: (page) => page.panel(3) },
      { keys: ['?'], shown: '?', does: 'these keys', act: (page) => page.help() },
      { keys: ['Escape'], shown: 'Escape', does: 'close, or forget what is measured, selected, searched for', act: (page) => page.escape() },
    ],
  },
];

// Keys go to whatever is being written in, and Enter and Space to a focused button, first.
export function listenToKeys(page: Commands, lane: () => number): void {
  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented) return;
    const target = event.target instanceof Element ? event.target : null;
    if (target?.closest('input, select, textarea, dialog')) return;
    if ((event.key === 'Enter' || event.key === ' ') && target?.closest('button, a')) return;
    const key = keyOf(event.key, event.shiftKey);
    if (!key) return;
    event.preventDefault();
    key.act(page, lane());
  });
}

export function keyOf(pressed: string, shift: boolean): Key | null {
  let plain: Key | null = null;
  for (const group of kKeys)
    for (const key of group.keys) {
      if (!key.keys.includes(pressed)) continue;
      if (key.shift === true && shift) return key;
      if (!key.shift) plain = key;
    }
  return plain;
}
