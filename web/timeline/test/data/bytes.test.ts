// The bytes of a chunk, and the memory that they take for a moment.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { deflateSync } from 'node:zlib';

import { bytesOfTexts, inflatedPieces, wholeOf } from '../../src/data/bytes';
import { Room } from '../../src/data/room';

test('a chunk is the same in whatever texts a browser cuts it', () => {
  const text = 'a=@=M=|=}\xff=\xfdz'; // with five escaped bytes
  const bytes = [0x61, 0x00, 0x0d, 0x3c, 0x3d, 0xff, 0xbd, 0x7a];
  for (let at = 0; at <= text.length; ++at) {
    assert.deepEqual([...bytesOfTexts([text.slice(0, at), '', text.slice(at)])], bytes, `cut at ${at}`);
  }
});

test('pieces are put together, and given back', async () => {
  const numbers = Uint8Array.from({ length: 300_000 }, (_, i) => (i * i) >>> 7);
  const pieces = await inflatedPieces(new Uint8Array(deflateSync(numbers)));
  assert.ok(pieces.length > 1);
  assert.deepEqual(wholeOf(pieces), numbers);
  assert.deepEqual(pieces.map(({ length }) => length), pieces.map(() => 0));
});

test('arrays of a room begin as zeros, and do not share memory', () => {
  const room = new Room();
  const last = { bytes: room.bytes(13).fill(1), words: room.words(3_000_000).fill(2) };
  assert.ok(last.bytes.every((byte) => byte === 1));
  room.empty();
  const arrays = [room.bytes(13), room.numbers(70_000), room.signedWords(5), room.words(1_000_000), room.bytes(1)];
  assert.ok(arrays.every((array) => array.every((value: number) => value === 0)));
  arrays.forEach((array, place) => array.fill(place));
  arrays.forEach((array, place) => assert.ok(array.every((value: number) => value === place)));
});
