// What the page shows at a moment, beside the stretch of time: shared by what draws and what acts.
import type { Matches, RecordDetail } from '../trace';
import { firstChoice, type LaneChoice } from './lanes';

export interface Span {
  from: number;
  to: number;
}

export interface State {
  choice: LaneChoice;
  lane: number; // the current one, -1: none
  selected: RecordDetail | null;
  dropout: number; // the one looked at, -1: none
  blamed: RecordDetail | null; // its culprit
  measured: Span | null;
  words: string; // searched for
  matches: Matches | null;
  match: number; // the one looked at, -1: none
}

export function firstState(): State {
  return {
    choice: firstChoice(),
    lane: -1,
    selected: null,
    dropout: -1,
    blamed: null,
    measured: null,
    words: '',
    matches: null,
    match: -1,
  };
}

// What keys, pointer and panels can ask of the page.
export interface Commands {
  move(share: number): void;
  zoom(factor: number): void;
  whole(): void;
  edge(end: boolean): void;
  zoomToSelected(): void;
  scroll(pages: number): void;
  nextLane(step: number): void;
  nextDropout(step: number): void;
  dropout(index: number): void;
  culprit(): void;
  evidence(step: number): void;
  nextFailure(step: number): void;
  startSearch(): void;
  nextMatch(step: number): void;
  nextCall(step: number): void;
  parent(): void;
  child(): void;
  reveal(record: number): void;
  select(record: number): void;
  measure(): void;
  stretch(share: number): void;
  pin(lane: number): void;
  hide(lane: number): void;
  showHidden(): void;
  fold(lane: number): void;
  foldGroup(name: string): void;
  idle(): void;
  group(): void;
  panel(index: number): void;
  help(): void;
  escape(): void;
}
