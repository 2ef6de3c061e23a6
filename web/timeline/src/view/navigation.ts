// Where to look: the neighbourhood of a dropout, of a failure, of a call.
import { newLaneColumns } from '../columns';
import type { Dropout, RecordDetail, Trace } from '../trace';
import type { Span } from './state';
import type { Viewport } from './viewport';

const kScratch = newLaneColumns();
const kUsualBudget = 10e6; // ns, where no cycle tells it

// A dropout's neighbourhood: the cycles around it, and its culprit where that is near.
export function neighbourhood(trace: Trace, dropout: Dropout, culprit: RecordDetail | null): Span {
  const budget = budgetNear(trace, dropout);
  let from = dropout.time - Math.max(2 * budget, dropout.lacking + budget);
  let to = dropout.time + budget;
  if (culprit) {
    const { call, time } = culprit;
    const begin = call?.begin ?? time;
    const end = call?.end ?? time;
    const reach = 20 * (to - from);
    if (begin > dropout.time - reach && end < dropout.time + reach) {
      const margin = (end - begin) * 0.1;
      from = Math.min(from, begin - margin);
      to = Math.max(to, end + margin);
    }
  }
  return { from, to };
}

function budgetNear(trace: Trace, dropout: Dropout): number {
  if (dropout.lane < 0) return Math.max(kUsualBudget, dropout.lacking);
  const { cycles } = kScratch;
  cycles.count = 0;
  const reach = 50e6;
  trace.cycles(dropout.lane, dropout.time - reach, dropout.time + reach, 1000, cycles);
  for (let at = 0; at < cycles.count; at++) if (cycles.budget[at] > 0) return cycles.budget[at];
  return Math.max(kUsualBudget, dropout.lacking);
}

// Where a record can be seen: as it is, if it is on the screen and not too small, else around it.
export function spanFor(view: Viewport, detail: RecordDetail): Span | null {
  const from = detail.call?.begin ?? detail.time;
  const to = detail.call?.end ?? detail.time;
  const span = view.targetTo - view.targetFrom;
  const pixels = ((to - from) / span) * view.width;
  const seen = from >= view.targetFrom && to <= view.targetTo;
  const large = !detail.call || pixels >= 6;
  if (seen && large) return null;
  const wide = to - from > span * 0.9 ? (to - from) * 1.25 : large ? span : (to - from) * 12;
  const middle = (from + to) / 2;
  return { from: middle - wide / 2, to: middle + wide / 2 };
}

// The next or the last call of a lane at a depth, after or before a time; -1: none nearby.
export function callBeside(
  trace: Trace,
  lane: number,
  depth: number,
  time: number,
  span: number,
  step: number,
): number {
  const { bars } = kScratch;
  bars.count = 0;
  const from = step > 0 ? time : time - span;
  trace.bars(lane, from, from + span, 1, bars);
  let found = -1;
  for (let at = 0; at < bars.count; at++) {
    if (bars.depth[at] !== depth) continue;
    const begin = bars.begin[at];
    if (step > 0 ? begin <= time : begin >= time) continue;
    if (found < 0 || (step > 0 ? begin < bars.begin[found] : begin > bars.begin[found])) found = at;
  }
  return found < 0 ? -1 : bars.record[found];
}

// The first call inside a call; -1: none.
export function callInside(trace: Trace, detail: RecordDetail): number {
  if (!detail.call) return -1;
  const { bars } = kScratch;
  const depth = detail.parents.length + 1;
  trace.bars(detail.lane, detail.call.begin, detail.call.end, 1, bars);
  for (let at = 0; at < bars.count; at++)
    if (bars.depth[at] === depth && bars.begin[at] >= detail.call.begin) return bars.record[at];
  return -1;
}
