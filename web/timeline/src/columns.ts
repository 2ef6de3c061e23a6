// The columns that a trace fills for a frame: kept from frame to frame, so that drawing allocates
// nothing. Whoever fills them makes them longer where they are too short.
import type { Bars, Cycles, Points } from './trace';

export function newBars(): Bars {
  return {
    count: 0,
    begin: new Float64Array(0),
    end: new Float64Array(0),
    depth: new Uint16Array(0),
    event: new Uint16Array(0),
    flags: new Uint8Array(0),
    record: new Float64Array(0),
  };
}

export function newPoints(): Points {
  return {
    count: 0,
    time: new Float64Array(0),
    depth: new Uint16Array(0),
    event: new Uint16Array(0),
    flags: new Uint8Array(0),
    record: new Float64Array(0),
  };
}

export function newCycles(): Cycles {
  return {
    count: 0,
    begin: new Float64Array(0),
    end: new Float64Array(0),
    due: new Float64Array(0),
    budget: new Float64Array(0),
    dropout: new Uint8Array(0),
    record: new Float64Array(0),
  };
}

export interface LaneColumns {
  readonly bars: Bars;
  readonly points: Points;
  readonly cycles: Cycles;
}

export function newLaneColumns(): LaneColumns {
  return { bars: newBars(), points: newPoints(), cycles: newCycles() };
}

type Column = Float64Array | Uint16Array | Uint8Array;
const kLeast = 1024;

// Makes all columns longer; what is in them stays.
export function grow(into: Bars | Points | Cycles): void {
  const columns = into as unknown as Record<string, Column | number>;
  for (const [name, column] of Object.entries(columns)) {
    if (typeof column === 'number') continue;
    const room = Math.max(kLeast, 2 * column.length);
    const longer = new (column.constructor as new (room: number) => Column)(room);
    longer.set(column);
    columns[name] = longer;
  }
}
