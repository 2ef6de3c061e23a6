// Wheel, drag, pinch and click over the lanes, the ruler and the minimap.
import type { Frame } from './frame';
import type { Viewport } from './viewport';

export interface PointerActs {
  changed(): void; // the stretch of time moved
  hover(x: number, y: number, event: PointerEvent): void; // in layout pixels, as the others
  leave(): void;
  click(x: number, y: number): void;
  doubleClick(x: number, y: number): void;
  measure(from: number, to: number, done: boolean): void;
}

const kClick = 4; // layout pixels that a click may wander
const kWheel = 0.0022; // zoom a pixel of the wheel
const kPinch = 0.012;

export function listenToPointer(
  frame: Frame,
  view: Viewport,
  begin: number,
  end: number,
  acts: PointerActs,
): void {
  for (const canvas of [frame.lanes, frame.ruler]) {
    canvas.addEventListener('wheel', (event) => wheel(event, view, acts), { passive: false });
    new Drag(canvas, frame.scroller, view, acts);
  }
  frame.lanes.addEventListener('dblclick', (event) =>
    acts.doubleClick(event.offsetX / view.size, event.offsetY / view.size),
  );
  listenToMinimap(frame, view, begin, end, acts);
}

function wheel(event: WheelEvent, view: Viewport, acts: PointerActs): void {
  event.preventDefault();
  const unit = event.deltaMode === 1 ? 16 : event.deltaMode === 2 ? 400 : 1;
  const across = event.shiftKey && event.deltaX === 0 ? event.deltaY : event.deltaX;
  if (!event.ctrlKey && Math.abs(across) >= Math.abs(event.deltaY)) {
    view.pan((across * unit) / view.size);
  } else {
    const strength = event.ctrlKey ? kPinch : kWheel;
    const turned = Math.max(-600, Math.min(600, event.deltaY * unit));
    view.zoom(Math.exp(turned * strength), event.offsetX / view.size, !event.ctrlKey);
  }
  acts.changed();
}

interface Place {
  readonly x: number;
  readonly y: number;
}

// One pointer drags or measures, two pinch.
class Drag {
  private readonly held = new Map<number, Place>(); // by pointer
  private start: Place = { x: 0, y: 0 };
  private moved = false;
  private measureFrom = NaN;

  constructor(
    private readonly canvas: HTMLCanvasElement,
    private readonly scroller: HTMLElement,
    private readonly view: Viewport,
    private readonly acts: PointerActs,
  ) {
    canvas.addEventListener('pointerdown', (event) => this.down(event));
    canvas.addEventListener('pointermove', (event) => this.move(event));
    canvas.addEventListener('pointerup', (event) => this.up(event, true));
    canvas.addEventListener('pointercancel', (event) => this.up(event, false));
    canvas.addEventListener('pointerleave', () => acts.leave());
  }

  // Where the pointer is, in layout pixels.
  private placeOf(event: PointerEvent): Place {
    return { x: event.offsetX / this.view.size, y: event.offsetY / this.view.size };
  }

  private down(event: PointerEvent): void {
    if (event.button !== 0) return;
    this.canvas.setPointerCapture(event.pointerId);
    this.start = this.placeOf(event);
    this.held.set(event.pointerId, this.start);
    this.moved = this.held.size > 1;
    this.measureFrom = event.shiftKey ? this.view.time(this.start.x) : NaN;
  }

  private move(event: PointerEvent): void {
    const held = this.held.get(event.pointerId);
    const place = this.placeOf(event);
    this.acts.hover(place.x, place.y, event);
    if (!held) return;
    if (!this.moved && Math.hypot(place.x - this.start.x, place.y - this.start.y) < kClick) return;
    this.moved = true;
    if (!Number.isNaN(this.measureFrom)) {
      this.acts.measure(this.measureFrom, this.view.time(place.x), false);
    } else if (this.held.size === 1) {
      this.view.pan(held.x - place.x);
      this.scroller.scrollTop += (held.y - place.y) * this.view.size;
    } else {
      this.pinch(event.pointerId, held, place);
    }
    this.held.set(event.pointerId, place);
    this.acts.changed();
  }

  private pinch(pointer: number, held: Place, place: Place): void {
    let other = held;
    for (const [id, one] of this.held) if (id !== pointer) other = one;
    const before = Math.max(8, Math.abs(held.x - other.x));
    const after = Math.max(8, Math.abs(place.x - other.x));
    this.view.zoom(before / after, other.x, false);
  }

  private up(event: PointerEvent, whole: boolean): void {
    if (!this.held.delete(event.pointerId) || !whole) return;
    const { x, y } = this.placeOf(event);
    if (!this.moved) this.acts.click(x, y);
    else if (!Number.isNaN(this.measureFrom))
      this.acts.measure(this.measureFrom, this.view.time(x), true);
    this.measureFrom = NaN;
  }
}

// A press brings the window there, a drag takes it along; the wheel zooms in the middle.
function listenToMinimap(
  frame: Frame,
  view: Viewport,
  begin: number,
  end: number,
  acts: PointerActs,
): void {
  const canvas = frame.minimap;
  const timeAt = (event: MouseEvent) =>
    begin + (event.offsetX / canvas.clientWidth) * (end - begin);
  const centre = (event: MouseEvent, eased: boolean) => {
    const half = (view.targetTo - view.targetFrom) / 2;
    const time = timeAt(event);
    view.show(time - half, time + half, eased);
    acts.changed();
  };
  canvas.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    canvas.setPointerCapture(event.pointerId);
    centre(event, true);
  });
  canvas.addEventListener('pointermove', (event) => {
    if (canvas.hasPointerCapture(event.pointerId)) centre(event, false);
  });
  canvas.addEventListener(
    'wheel',
    (event) => {
      event.preventDefault();
      view.zoom(Math.exp(Math.max(-600, Math.min(600, event.deltaY)) * kWheel), view.width / 2);
      acts.changed();
    },
    { passive: false },
  );
}
