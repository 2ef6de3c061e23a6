// What the numbers in blocks stand for.

import { lanesOfThreads, type Head, type Kind } from './head';

export const enum Role {
  point,
  start,
  end,
}

// By symbol: a kind of record on one thread.
export interface Symbols {
  readonly kind: Uint32Array;
  readonly lane: Uint32Array;
  readonly words: Uint8Array; // bit n: arg n + 1 is there
  readonly role: Uint8Array;
  readonly event: Uint16Array;
  readonly waits: Uint8Array;
}

function roleOf(kind: Kind): Role {
  if (kind.qualifier === 1) return kind.point ? Role.point : Role.start;
  return kind.qualifier === 2 ? Role.end : Role.point;
}

export function symbolsOf(head: Head): Symbols {
  const count = head.symbols.length / 3;
  const lanes = lanesOfThreads(head);
  const symbols = {
    kind: new Uint32Array(count),
    lane: new Uint32Array(count),
    words: new Uint8Array(count),
    role: new Uint8Array(count),
    event: new Uint16Array(count),
    waits: new Uint8Array(count),
  };
  for (let i = 0; i < count; ++i) {
    const kind = head.kinds[head.symbols[3 * i]!]!;
    symbols.kind[i] = head.symbols[3 * i]!;
    symbols.lane[i] = lanes[head.symbols[3 * i + 1]!]!;
    symbols.words[i] = head.symbols[3 * i + 2]!;
    symbols.role[i] = roleOf(kind);
    symbols.event[i] = kind.event;
    symbols.waits[i] = kind.waits ? 1 : 0;
  }
  return symbols;
}
