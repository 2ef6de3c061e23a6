// Texts of the trace made safe to look at: what would not be seen is spelled out, what is too long
// is cut with its length said.
import { count } from './units';

// Control and format characters, halves of pairs, line and paragraph separators.
const kUnseen = /[\p{Cc}\p{Cf}\p{Cs}\u2028\u2029]/gu;
const kShort: Record<string, string> = { '\n': '\\n', '\r': '\\r', '\t': '\\t' };

export const kNameLimit = 120;
export const kLineLimit = 4000;

export function shown(text: string, limit = kLineLimit): string {
  const whole = text.length <= limit;
  const kept = (whole ? text : text.slice(0, limit)).replace(kUnseen, spelled);
  return whole ? kept : `${kept}… (${count(text.length)} characters)`;
}

function spelled(character: string): string {
  const code = character.codePointAt(0)!;
  if (kShort[character]) return kShort[character];
  if (code < 0x100) return `\\x${code.toString(16).padStart(2, '0')}`;
  return `\\u${code.toString(16).padStart(4, '0')}`;
}
