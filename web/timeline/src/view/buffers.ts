// The columns that a trace fills for a frame: kept from frame to frame, so that drawing allocates
// nothing. Whoever fills them makes them longer where they are too short.
import type { Bars, Cycles, Points } from '../trace';

const kFirst = 1024;

export interface LaneBuffers {
  readonly bars: Bars;
  readonly points: Points;
  readonly cycles: Cycles;
}

export function makeBuffers(): LaneBuffers {
  return {
    bars: {
      count: 0,
      begin: new Float64Array(kFirst),
      end: new Float64Array(kFirst),
      depth: new Uint16Array(kFirst),
      event: new Uint16Array(kFirst),
      flags: new Uint8Array(kFirst),
      record: new Float64Array(kFirst),
    },
    points: {
      count: 0,
      time: new Float64Array(kFirst),
      depth: new Uint16Array(kFirst),
      event: new Uint16Array(kFirst),
      flags: new Uint8Array(kFirst),
      record: new Float64Array(kFirst),
    },
    cycles: {
      count: 0,
      begin: new Float64Array(kFirst),
      end: new Float64Array(kFirst),
      due: new Float64Array(kFirst),
      budget: new Float64Array(kFirst),
      dropout: new Uint8Array(kFirst),
      record: new Float64Array(kFirst),
    },
  };
}
