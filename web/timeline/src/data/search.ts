// Which records' lines have some words. What a kind's own words decide is decided once; texts are
// made only where the values may.

import type { Kind, Piece } from './head';
import { nameOf, Reading } from './texts';

// What a value's characters can be; null: any.
function charactersOf(piece: Piece): string | null {
  switch (piece.reading as Reading) {
    case Reading.signedDecimal:
      return ' -0123456789';
    case Reading.unsignedDecimal:
    case Reading.seconds:
      return ' 0123456789';
    case Reading.hexadecimal:
    case Reading.pointer:
      return ' x0123456789abcdef';
    case Reading.nanoseconds:
    case Reading.ticks:
      return '-.0123456789';
    case Reading.words:
      return piece.words!.join('').toLowerCase();
    default:
      return null;
  }
}

// A line as a pattern: characters, and values of any length.
type Pattern = readonly (string | { readonly of: string | null })[];

function patternOf(kind: Kind): Pattern {
  if (kind.text === undefined) return [...nameOf(kind).toLowerCase(), ' ', { of: ' x0123456789abcdef' }];
  const pattern: (string | { of: string | null })[] = [...nameOf(kind).toLowerCase()];
  if (kind.text.pieces !== undefined) pattern.push(' ');
  for (const piece of kind.text.pieces ?? []) {
    pattern.push(...piece.literal.toLowerCase());
    if (piece.slice !== undefined) pattern.push({ of: charactersOf(piece) });
  }
  return pattern;
}

// Whether a line of the pattern can have the word in it.
function canHave(pattern: Pattern, word: string): boolean {
  let places = new Set(pattern.keys());
  for (const character of word) {
    const next = new Set<number>();
    for (let place of places) {
      for (; place < pattern.length; ++place) {
        const element = pattern[place]!;
        if (typeof element === 'string') {
          if (element === character) next.add(place + 1);
          break;
        }
        // A value takes the character, or has ended.
        if (element.of === null || element.of.includes(character)) next.add(place);
      }
    }
    if (next.size === 0) return false;
    places = next;
  }
  return true;
}

// Of a kind's lines: all have the words, none has, or those that have each of the words listed.
export type Verdict = 'all' | 'none' | readonly string[];

export function wordsOf(text: string): string[] {
  return text.toLowerCase().split(/\s+/).filter((word) => word !== '');
}

export function verdictOf(kind: Kind, words: readonly string[]): Verdict {
  const name = nameOf(kind).toLowerCase();
  const literals = (kind.text?.pieces ?? []).map((piece) => piece.literal.toLowerCase());
  const pattern = patternOf(kind);
  const open: string[] = [];
  for (const word of words) {
    if (name.includes(word) || literals.some((literal) => literal.includes(word))) continue;
    if (!canHave(pattern, word)) return 'none';
    open.push(word);
  }
  return open.length === 0 ? 'all' : open;
}
