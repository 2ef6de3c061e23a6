// Makes a record's text and values from its words, as sonaprobe does: src/events/log_text.cpp.

import type { Kind, Piece, Slice } from './head';
import { bigOf, hexText, kTwo32, signedText, unsignedText } from './words';

// As src/events/decoder.h numbers them.
export const enum Reading {
  nothing,
  signedDecimal,
  unsignedDecimal,
  hexadecimal,
  pointer,
  words,
  nanoseconds,
  fourCharacters,
  ticks,
  character,
  seconds,
}

// A record's words: arg n at n - 1, in halves.
export interface Words {
  readonly low: Uint32Array;
  readonly high: Uint32Array;
  ticksPerMicrosecond: number;
}

export function newWords(): Words {
  return { low: new Uint32Array(5), high: new Uint32Array(5), ticksPerMicrosecond: 1000 };
}

// What slice() has found, so that it allocates nothing.
let low = 0;
let high = 0;

function slice(words: Words, [word, dropHigh, dropLow]: Slice, signExtend: boolean): void {
  low = words.low[word - 1]!;
  high = words.high[word - 1]!;
  if (dropHigh >= 32) {
    high = (low << (dropHigh - 32)) >>> 0;
    low = 0;
  } else if (dropHigh > 0) {
    high = ((high << dropHigh) | (low >>> (32 - dropHigh))) >>> 0;
    low = (low << dropHigh) >>> 0;
  }
  const fill = signExtend ? high >> 31 : 0;
  if (dropLow >= 32) {
    low = signExtend ? (high >> (dropLow - 32)) >>> 0 : high >>> (dropLow - 32);
    high = fill >>> 0;
  } else if (dropLow > 0) {
    low = ((low >>> dropLow) | (high << (32 - dropLow))) >>> 0;
    high = signExtend ? (high >> dropLow) >>> 0 : high >>> dropLow;
  }
}

function padded(text: string, piece: Piece): string {
  const width = piece.width ?? 0;
  if (text.length >= width) return text;
  if (!piece.zeroFill) return text.padStart(width, ' ');
  return text[0] === '-' ? '-' + text.slice(1).padStart(width - 1, '0') : text.padStart(width, '0');
}

const kDeviceTicksPerMicrosecond = 24;

// Six decimals; where two are as near, the even one, as C has it.
function realText(value: number): string {
  const kExact = 2 ** 40;
  if (value < kExact) return value.toFixed(6);
  const whole = Math.floor(value);
  const parts = (value - whole) * 4096; // a whole number: there are no more bits
  const millionths = (parts * 1_000_000) / 4096;
  let rounded = Math.floor(millionths);
  const rest = millionths - rounded;
  if (rest > 0.5 || (rest === 0.5 && rounded % 2 === 1)) ++rounded;
  const carried = BigInt(whole) + (rounded === 1_000_000 ? 1n : 0n);
  return `${carried}.${String(rounded % 1_000_000).padStart(6, '0')}`;
}

function nanosecondsText(): string {
  const nanoseconds = bigOf(low, high);
  const seconds = Number(BigInt.asIntN(32, nanoseconds / 1_000_000_000n));
  const below = String(nanoseconds % 1_000_000_000n).padStart(9, '0');
  return `${seconds}.${below.slice(0, 3)}.${below.slice(3, 6)}.${below.slice(6)}`;
}

function secondsText(words: Words, later: Slice): string {
  const earlier = bigOf(low, high);
  slice(words, later, false);
  const ticks = Number(BigInt.asUintN(64, bigOf(low, high) - earlier));
  const microseconds = Math.floor(ticks / words.ticksPerMicrosecond);
  const most = 2n ** 64n - 1n;
  const bounded = microseconds >= 2 ** 64 ? most : BigInt(microseconds);
  return String(bounded / 1_000_000n);
}

export function valueText(piece: Piece, words: Words): string {
  if (piece.slice === undefined) return '';
  slice(words, piece.slice, piece.signExtend === true);
  switch (piece.reading as Reading) {
    case Reading.signedDecimal:
      return padded(signedText(low, high), piece);
    case Reading.unsignedDecimal:
      return padded(unsignedText(low, high), piece);
    case Reading.hexadecimal: {
      const digits = hexText(low, high);
      return piece.alternate && (low | high) !== 0
        ? ('0x' + digits).padStart(piece.width ?? 0, ' ')
        : padded(digits, piece);
    }
    case Reading.pointer:
      return '0x' + hexText(low, high);
    case Reading.words:
      return piece.words![(low | high) !== 0 ? 0 : 1];
    case Reading.nanoseconds:
      return nanosecondsText();
    case Reading.fourCharacters:
      return String.fromCharCode(low >>> 24, (low >>> 16) & 0xff, (low >>> 8) & 0xff, low & 0xff);
    case Reading.ticks:
      return realText(Number(high < 0x20_0000 ? high * kTwo32 + low : bigOf(low, high)) /
        kDeviceTicksPerMicrosecond);
    case Reading.character:
      return String.fromCharCode(low & 0xff);
    case Reading.seconds:
      return secondsText(words, piece.later!);
    default:
      return '';
  }
}

export function textOf(kind: Kind, words: Words): string {
  if (kind.text === undefined) {
    const all = [0, 1, 2, 3].map((i) => '0x' + hexText(words.low[i]!, words.high[i]!));
    return all.join(' ');
  }
  let text = '';
  for (const piece of kind.text.pieces ?? []) text += piece.literal + valueText(piece, words);
  return text;
}

export function nameOf(kind: Kind): string {
  return kind.text === undefined ? kind.name! : `${kind.text.group}::${kind.text.method}`;
}

// Group, method and text.
export function lineOf(kind: Kind, words: Words): string {
  const text = textOf(kind, words);
  return text === '' ? nameOf(kind) : `${nameOf(kind)} ${text}`;
}
