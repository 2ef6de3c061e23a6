// Paints very many small rectangles, as pixels: one by one they would cost more than the pixels do.
import type { Surface } from './bars';

export const kDense = 400; // rectangles of a lane from which on that is so

// Rows of pixels; one that all of a bar's rows are equal to can be stretched to the bar's height.
export class DenseRows {
  private readonly context = document
    .createElement('canvas')
    .getContext('2d', { alpha: false, willReadFrequently: true })!;
  private image = new ImageData(1, 1);
  private pixels = new Uint32Array(this.image.data.buffer);
  private rows = 0;
  private readonly words = new Map<string, number>(); // by colour

  // Makes so many rows of one colour.
  begin(width: number, rows: number, colour: string): void {
    const { canvas } = this.context;
    if (this.image.width !== width || this.image.height < rows) {
      this.image = new ImageData(width, rows);
      this.pixels = new Uint32Array(this.image.data.buffer);
      canvas.width = width;
      canvas.height = rows;
    }
    this.rows = rows;
    this.pixels.fill(this.wordOf(colour), 0, width * rows);
  }

  // What a pixel of the colour is in memory; `colour` is like #14181f.
  wordOf(colour: string): number {
    let word = this.words.get(colour);
    if (word === undefined) {
      const rgb = parseInt(colour.slice(1), 16);
      word = ((0xff << 24) | ((rgb & 0xff) << 16) | (rgb & 0xff00) | (rgb >> 16)) >>> 0;
      this.words.set(colour, word);
    }
    return word;
  }

  put(row: number, left: number, right: number, word: number): void {
    const { width } = this.image;
    const end = row * width + Math.min(width, right);
    for (let at = row * width + Math.max(0, left); at < end; at++) this.pixels[at] = word;
  }

  // All rows onto the surface; `top` in device pixels.
  copy({ context }: Surface, top: number): void {
    const { width } = this.image;
    const { rows } = this;
    context.drawImage(this.context.canvas, 0, 0, width, rows, 0, top, width, rows);
  }

  // One row; `height` in device pixels too.
  stretch({ context }: Surface, row: number, top: number, height: number): void {
    const { width } = this.image;
    context.drawImage(this.context.canvas, 0, row, width, 1, 0, top, width, height);
  }

  // To be called after all rows are put, and before they are copied.
  end({ context }: Surface): void {
    this.context.putImageData(this.image, 0, 0, 0, 0, this.image.width, this.rows);
    context.imageSmoothingEnabled = false;
  }
}
