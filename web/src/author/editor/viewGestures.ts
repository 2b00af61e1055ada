/** Moving and zooming the view by pointer: with the wheel, with a pressed pointer, and with two fingers. */
import type { Point } from "../../model/geometry.ts";
import type { Editor } from "./editor.svelte.ts";

/** Where a pointer is, in px of the window. */
export const placeOf = (event: MouseEvent): Point => ({ x: event.clientX, y: event.clientY });

export class ViewGestures {
  readonly #editor: Editor;
  #panning: Point | undefined;
  /** Fingers on the canvas; two of them pan and zoom. */
  readonly #fingers = new Map<number, Point>();

  constructor(editor: Editor) {
    this.#editor = editor;
  }

  /** @returns whether this is the second finger, so that both move the view from here on */
  addFinger(event: PointerEvent): boolean {
    this.#fingers.set(event.pointerId, placeOf(event));
    return this.#fingers.size === 2;
  }

  startPan(event: PointerEvent): void {
    this.#panning = placeOf(event);
  }

  endPan(): void {
    this.#panning = undefined;
  }

  /** @returns whether the pointer moves the view */
  move(event: PointerEvent): boolean {
    if (this.#fingers.has(event.pointerId) && this.#fingers.size === 2) {
      this.#pinch(event);
      return true;
    }
    if (!this.#panning) return false;
    this.#editor.panBy(event.clientX - this.#panning.x, event.clientY - this.#panning.y);
    this.#panning = placeOf(event);
    return true;
  }

  #pinch(event: PointerEvent): void {
    const other = [...this.#fingers].find(([id]) => id !== event.pointerId)![1];
    const before = this.#fingers.get(event.pointerId)!;
    const now = placeOf(event);
    const origin = this.#editor.origin();
    const distance = (one: Point) => Math.max(1, Math.hypot(one.x - other.x, one.y - other.y));
    const middle = { x: (now.x + other.x) / 2 - origin.x, y: (now.y + other.y) / 2 - origin.y };
    this.#editor.panBy((now.x - before.x) / 2, (now.y - before.y) / 2);
    this.#editor.zoomTo((this.#editor.zoom * distance(now)) / distance(before), middle);
    this.#fingers.set(event.pointerId, now);
  }

  /** The pointer was lifted or taken away. */
  end(event: PointerEvent): void {
    this.#fingers.delete(event.pointerId);
    this.endPan();
  }

  /** Zooms with Ctrl, otherwise pans; with Shift to the side. */
  wheel(event: WheelEvent): void {
    event.preventDefault();
    const origin = this.#editor.origin();
    if (event.ctrlKey || event.metaKey) {
      this.#editor.zoomTo(this.#editor.zoom * Math.exp(-event.deltaY / 300), {
        x: event.clientX - origin.x,
        y: event.clientY - origin.y,
      });
    } else {
      this.#editor.panBy(event.shiftKey ? -event.deltaY : -event.deltaX, event.shiftKey ? 0 : -event.deltaY);
    }
  }
}
