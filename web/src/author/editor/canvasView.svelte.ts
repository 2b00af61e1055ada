/** How a page is looked at on the canvas: which part of it, and how large. */
import { type Box, fitInto, type Point } from "../../model/geometry.ts";
import type { Page } from "../../model/layout.ts";

const zooms = { least: 0.1, most: 4 };

export abstract class CanvasView {
  abstract readonly page: Page | undefined;
  zoom = $state(1);
  pan = $state.raw<Point>({ x: 0, y: 0 });
  room = $state.raw({ width: 800, height: 600 });
  /** Left upper corner of the canvas on the screen. */
  origin: () => Point = () => ({ x: 0, y: 0 });
  /** Whether the view shows the page as a whole, and has not been moved since. */
  #isFitted = false;

  /** A point of the screen as one of the page. */
  toPage(at: Point): Point {
    const origin = this.origin();
    return { x: (at.x - origin.x - this.pan.x) / this.zoom, y: (at.y - origin.y - this.pan.y) / this.zoom };
  }

  /** The page as a whole, with a margin. */
  fit(): void {
    if (!this.page) return;
    const margin = Math.min(12, this.room.width / 20);
    const fit = fitInto(this.page, { width: this.room.width - 2 * margin, height: this.room.height - 2 * margin });
    this.zoom = Math.min(fit.scale, 1);
    this.pan = {
      x: (this.room.width - this.page.width * this.zoom) / 2,
      y: (this.room.height - this.page.height * this.zoom) / 2,
    };
    this.#isFitted = true;
  }

  /** Another room on the screen: a page that was shown as a whole still is, otherwise what was in the middle stays. */
  resize(room: { width: number; height: number }): void {
    const isFitted = this.#isFitted;
    if (!isFitted) this.panBy((room.width - this.room.width) / 2, (room.height - this.room.height) / 2);
    this.room = room;
    if (isFitted) this.fit();
  }

  /** Another zoom; what lies under that point of the canvas stays there. */
  zoomTo(zoom: number, at: Point = { x: this.room.width / 2, y: this.room.height / 2 }): void {
    const next = Math.min(zooms.most, Math.max(zooms.least, zoom));
    this.pan = {
      x: at.x - ((at.x - this.pan.x) * next) / this.zoom,
      y: at.y - ((at.y - this.pan.y) * next) / this.zoom,
    };
    this.zoom = next;
    this.#isFitted = false;
  }

  panBy(dx: number, dy: number): void {
    this.pan = { x: this.pan.x + dx, y: this.pan.y + dy };
    this.#isFitted = false;
  }

  /** The part of the page that is seen; all of it while none is. */
  seen(): Box {
    const { width, height } = this.page ?? this.room;
    const left = Math.max(0, -this.pan.x / this.zoom);
    const top = Math.max(0, -this.pan.y / this.zoom);
    const right = Math.min(width, (this.room.width - this.pan.x) / this.zoom);
    const bottom = Math.min(height, (this.room.height - this.pan.y) / this.zoom);
    if (right <= left || bottom <= top) return { x: 0, y: 0, width, height };
    return { x: left, y: top, width: right - left, height: bottom - top };
  }
}
