// The whole trace in one strip: how busy it is, where records failed, where the sound broke off and
// what the search found; a window over it is what the lanes show.
import type { Trace } from '../trace';
import type { Surface } from './bars';
import type { Theme } from './colours';

const kManyDropouts = 100; // more are thinner

export function paintMinimap(
  surface: Surface,
  trace: Trace,
  matches: Float64Array | null,
  theme: Theme,
): void {
  const { context, width, height, ratio } = surface;
  const { overview } = trace;
  const span = Math.max(1, trace.end - trace.begin);
  const bottom = height - Math.round(5 * ratio); // failures stand below
  const top = Math.round(5 * ratio); // matches above
  context.fillStyle = theme.paper;
  context.fillRect(0, 0, width, height);

  context.fillStyle = theme.strong;
  const buckets = overview.busy.length;
  for (let x = 0; x < width; x++) {
    const first = Math.floor((x * buckets) / width);
    const last = Math.max(first + 1, Math.floor(((x + 1) * buckets) / width));
    let most = 0;
    for (let at = first; at < last && at < buckets; at++) most = Math.max(most, overview.busy[at]);
    if (most <= 0) continue;
    const tall = Math.max(1, Math.round(Math.min(1, most) * (bottom - top)));
    context.fillRect(x, bottom - tall, 1, tall);
  }

  const failed = overview.failures;
  context.fillStyle = theme.amber;
  const wide = Math.max(2, Math.round(3 * ratio));
  for (let at = 0; at < failed.length; at++) {
    if (failed[at] === 0) continue;
    const x = Math.round(((at + 0.5) * width) / failed.length - wide / 2);
    context.fillRect(x, bottom, wide, height - bottom);
  }

  context.fillStyle = theme.red;
  const thin = Math.max(1, Math.round((trace.dropouts.length > kManyDropouts ? 1 : 2) * ratio));
  let lastX = -thin;
  for (const dropout of trace.dropouts) {
    const x = Math.round(((dropout.time - trace.begin) / span) * width) - (thin >> 1);
    if (x === lastX) continue;
    context.fillRect(x, 0, thin, height);
    lastX = x;
  }

  if (!matches) return;
  context.fillStyle = theme.ink;
  lastX = -1;
  const tick = Math.max(1, Math.round(ratio));
  for (let at = 0; at < matches.length; at++) {
    const x = Math.round(((matches[at] - trace.begin) / span) * width);
    if (x === lastX) continue;
    context.fillRect(x, 0, tick, top);
    lastX = x;
  }
}
