// Paints an I/O thread's cycles, each against its budget: a column from due to deadline, as high as
// the share of the budget that was used when the cycle ended. The line is the whole budget.
import type { Cycles } from '../trace';
import type { Surface } from './bars';
import type { Theme } from './colours';
import { type DenseRows, kDense } from './dense';
import { kStrip } from './lanes';
import { duration } from './units';
import type { Viewport } from './viewport';

const kTop = 4 / 3; // budgets the strip is high; more is cut
const kBudgetLine = kStrip / kTop; // layout pixels from the strip's base to that line
const kKinds = 3; // in time, past the deadline, with a dropout

export function paintCycles(
  surface: Surface,
  view: Viewport,
  top: number,
  cycles: Cycles,
  theme: Theme,
  dense: DenseRows,
): void {
  const { context, ratio, width } = surface;
  const scale = ratio / view.nsPerPixel;
  const base = Math.round((top + kStrip) * ratio);
  const budgetHeight = kBudgetLine * ratio;
  const isDense = cycles.count >= kDense;
  const rows = Math.ceil(kTop * budgetHeight);
  if (isDense) dense.begin(width, rows, theme.paper);
  for (let kind = 0; kind < kKinds; kind++) {
    const colour = kind === 0 ? theme.strong : kind === 1 ? theme.ink : theme.red;
    const word = dense.wordOf(colour);
    context.fillStyle = colour;
    const least = kind === 2 ? Math.round(3 * ratio) : 1;
    for (let at = 0; at < cycles.count; at++) {
      const due = cycles.due[at];
      const budget = cycles.budget[at];
      const known = due === due && budget > 0;
      const share = known ? (cycles.end[at] - due) / budget : 0;
      const found = cycles.dropout[at] ? 2 : share > 1 ? 1 : 0;
      if (found !== kind) continue;
      const begin = known ? due : cycles.begin[at];
      const end = known ? due + budget : cycles.end[at];
      const left = Math.max(-8, Math.round((begin - view.from) * scale));
      let right = Math.min(width + 8, Math.round((end - view.from) * scale));
      if (right - left > 3) right--;
      else right++; // the latest of several: no gap to its neighbour
      if (right - left < least) right = left + least;
      if (right < 0 || left > width) continue;
      const height = Math.max(1, Math.round(Math.min(kTop, Math.max(0.04, share)) * budgetHeight));
      if (!isDense) context.fillRect(left, base - height, right - left, height);
      else for (let row = rows - height; row < rows; row++) dense.put(row, left, right, word);
    }
  }
  if (isDense) {
    dense.end(surface);
    dense.copy(surface, base - rows);
  }
  context.fillStyle = theme.ink;
  context.fillRect(0, base - Math.round(budgetHeight), width, Math.max(1, Math.round(ratio / 2)));
  context.fillStyle = theme.line;
  context.fillRect(0, base, width, 1);
  context.fillStyle = theme.dim;
  context.textBaseline = 'middle';
  context.strokeStyle = theme.paper;
  context.lineWidth = 3 * ratio;
  context.lineJoin = 'round';
  const text = budgetText(cycles);
  const y = base - Math.round(budgetHeight + 8 * ratio);
  context.strokeText(text, 4 * ratio, y);
  context.fillText(text, 4 * ratio, y);
}

let told = NaN;
let toldText = '';

// "budget 10.7 ms", made anew only where another budget is seen.
function budgetText(cycles: Cycles): string {
  for (let at = 0; at < cycles.count; at++) {
    const budget = cycles.budget[at];
    if (!(budget > 0)) continue;
    if (budget !== told) toldText = `budget ${duration((told = budget))}`;
    return toldText;
  }
  return 'budget';
}
