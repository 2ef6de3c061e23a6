// Numbers of 64 bits as text, from their halves: as the lines of sonaprobe have them.

export const kTwo32 = 0x1_0000_0000;

// Exact decimal digits of an unsigned word.
export function unsignedText(low: number, high: number): string {
  if (high === 0) return String(low);
  if (high < 0x20_0000) return String(high * kTwo32 + low);
  return String((BigInt(high) << 32n) | BigInt(low));
}

export function signedText(low: number, high: number): string {
  if (high < 0x8000_0000) return unsignedText(low, high);
  const negativeLow = -low >>> 0;
  const negativeHigh = (~high + (low === 0 ? 1 : 0)) >>> 0;
  return '-' + unsignedText(negativeLow, negativeHigh);
}

export function hexText(low: number, high: number): string {
  return high === 0 ? low.toString(16) : high.toString(16) + low.toString(16).padStart(8, '0');
}

// All sixteen digits, as JSON documents have addresses.
export function wordText(low: number, high: number): string {
  return '0x' + high.toString(16).padStart(8, '0') + low.toString(16).padStart(8, '0');
}

export function bigOf(low: number, high: number): bigint {
  return (BigInt(high) << 32n) | BigInt(low);
}
