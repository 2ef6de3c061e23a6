// Memory that is given back soon: a browser sees that arrays are no longer used only once there are
// some sixty megabytes of them.

const nobody = new MessageChannel();
nobody.port2.close();

// Gives back the memory of arrays, which are empty from then on: a message to nobody takes it along.
// Several may share theirs.
export function free(buffers: readonly ArrayBuffer[]): void {
  nobody.port1.postMessage(null, [...new Set(buffers)]);
}

// Room for arrays that are needed for a moment, used again and again.
export class Room {
  private buffer = new ArrayBuffer(1 << 20);
  private taken = 0;

  // What was taken before is lost.
  empty(): void {
    this.taken = 0;
  }

  // All of these are zeros.
  bytes(count: number): Uint8Array<ArrayBuffer> {
    const at = this.take(count);
    return new Uint8Array(this.buffer, at, count).fill(0);
  }
  words(count: number): Uint32Array<ArrayBuffer> {
    const at = this.take(4 * count);
    return new Uint32Array(this.buffer, at, count).fill(0);
  }
  signedWords(count: number): Int32Array<ArrayBuffer> {
    const at = this.take(4 * count);
    return new Int32Array(this.buffer, at, count).fill(0);
  }
  numbers(count: number): Float64Array<ArrayBuffer> {
    const at = this.take(8 * count);
    return new Float64Array(this.buffer, at, count).fill(0);
  }

  private take(bytes: number): number {
    if (this.taken + bytes > this.buffer.byteLength) {
      // What was taken already keeps the buffer that it has.
      this.buffer = new ArrayBuffer(Math.max(2 * this.buffer.byteLength, bytes));
      this.taken = 0;
    }
    const at = this.taken;
    this.taken += Math.ceil(bytes / 8) * 8;
    return at;
  }
}
