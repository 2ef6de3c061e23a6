// Reads what src/scope/timeline/columns.cpp has written: numbers, columns, and the characters that
// stand for bytes.

import { free, type Room } from './room';

const kEscape = 0x3d;
const kShift = 64;

// The bytes that a chunk's characters stand for, which may come in several texts. ISO-8859-15 gives
// each a code below 256.
export function bytesOfTexts(texts: readonly string[]): Uint8Array<ArrayBuffer> {
  const bytes = new Uint8Array(texts.reduce((sum, text) => sum + text.length, 0));
  let length = 0;
  let shift = 0;
  for (const text of texts) {
    for (let i = 0; i < text.length; ++i) {
      const code = text.charCodeAt(i);
      if (code === kEscape) {
        shift = kShift;
        continue;
      }
      bytes[length++] = code - shift;
      shift = 0;
    }
  }
  return bytes.subarray(0, length);
}

// In pieces, as they came.
export async function inflatedPieces(bytes: Uint8Array<ArrayBuffer>): Promise<Uint8Array<ArrayBuffer>[]> {
  const { readable, writable } = new DecompressionStream('deflate');
  const writer = writable.getWriter();
  const [pieces] = await Promise.all([piecesOf(readable), writer.write(bytes), writer.close()]);
  return pieces;
}

async function piecesOf(stream: ReadableStream<Uint8Array<ArrayBuffer>>): Promise<Uint8Array<ArrayBuffer>[]> {
  const pieces: Uint8Array<ArrayBuffer>[] = [];
  const reader = stream.getReader();
  for (;;) {
    const { done, value } = await reader.read();
    if (done) return pieces;
    pieces.push(value);
  }
}

export async function inflated(bytes: Uint8Array<ArrayBuffer>): Promise<Uint8Array> {
  return wholeOf(await inflatedPieces(bytes));
}

// The pieces are used up.
export function wholeOf(pieces: readonly Uint8Array<ArrayBuffer>[], room?: Room): Uint8Array {
  const length = pieces.reduce((sum, piece) => sum + piece.length, 0);
  const all = room?.bytes(length) ?? new Uint8Array(length);
  let at = 0;
  for (const piece of pieces) {
    all.set(piece, at);
    at += piece.length;
  }
  free(pieces.map((piece) => piece.buffer));
  return all;
}

// Numbers of seven bits a byte.
export class NumberReader {
  at = 0;
  constructor(readonly bytes: Uint8Array) {}

  // Exact below 2^53.
  next(): number {
    let number = 0;
    let scale = 1;
    for (;;) {
      const byte = this.bytes[this.at++]!;
      number += (byte & 0x7f) * scale;
      if (byte < 0x80) return number;
      scale *= 128;
    }
  }

  nextSigned(): number {
    return unzigzag(this.next());
  }

  nextByte(): number {
    return this.bytes[this.at++]!;
  }

  // The lowest 32 bits of a number of any size.
  nextLow(): number {
    let low = 0;
    let shift = 0;
    for (;;) {
      const byte = this.bytes[this.at++]!;
      if (shift < 32) low |= (byte & 0x7f) << shift;
      if (byte < 0x80) return low >>> 0;
      shift += 7;
    }
  }

  part(length: number): Uint8Array {
    this.at += length;
    return this.bytes.subarray(this.at - length, this.at);
  }
}

export function unzigzag(number: number): number {
  return number % 2 === 0 ? number / 2 : -(number + 1) / 2;
}

const kFirstLength = 248;
const kPlanes = 8;

// Heads, and planes of the bytes of numbers that are no heads.
export class ColumnReader {
  private head = 0;
  private readonly heads: Uint8Array;
  private readonly planes: Uint8Array[] = [];
  private readonly ats = new Uint32Array(kPlanes);

  constructor(reader: NumberReader) {
    this.heads = reader.part(reader.next());
    for (let i = 0; i < kPlanes; ++i) this.planes.push(reader.part(reader.next()));
  }

  next(): number {
    const head = this.heads[this.head++]!;
    if (head < kFirstLength) return head;
    const length = head - kFirstLength + 1;
    let number = 0;
    let scale = 1;
    for (let i = 0; i < length; ++i) {
      number += this.planes[i]![this.ats[i]!++]! * scale;
      scale *= 256;
    }
    return number;
  }

  nextSigned(): number {
    const head = this.heads[this.head]!;
    if (head < kFirstLength) {
      ++this.head;
      return (head >>> 1) ^ -(head & 1);
    }
    return unzigzag(this.next());
  }

  // A difference of 32 bits.
  nextDifference(): number {
    const number = this.next();
    return (number >>> 1) ^ -(number & 1);
  }
}
