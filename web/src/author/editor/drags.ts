/**
 * The pointer on the canvas: one object for each kind of drag, created on press, notified of each move, and ended.
 * Coordinates are px of the page; nothing here knows an element.
 */
import {
  boxAround,
  boxBetween,
  type Box,
  type Handle,
  overlaps,
  type Point,
  resized,
  scaledInto,
} from "../../model/geometry.ts";
import { type Component, componentSides, type ComponentType } from "../../model/layout.ts";
import { snapEdges, snapMove, type SnapTargets } from "../../model/snapping.ts";
import type { Editor } from "./editor.svelte.ts";

export interface Keys {
  /** Keep to one direction, or keep the proportions. */
  shift: boolean;
  /** No snapping. */
  free: boolean;
  /** Move copies, and leave the originals where they are. */
  copy: boolean;
}

export interface Drag {
  move(at: Point, keys: Keys): void;
  end(): void;
  cancel(): void;
}

/** Distance within which an edge snaps, in px of the screen. */
const reach = 6;

function targetsFor(editor: Editor): SnapTargets {
  const page = editor.page ?? { width: 0, height: 0 };
  return { page, others: editor.components.filter((one) => !editor.selection.has(one.id)) };
}

function settings(editor: Editor, keys: Keys) {
  return {
    grid: editor.snapsToGrid && !keys.free ? editor.grid : 0,
    reach: editor.snapsToParts && !keys.free ? reach / editor.zoom : 0,
  };
}

function clear(editor: Editor): void {
  editor.isMoving = false;
  editor.isCopying = false;
  editor.shift = { x: 0, y: 0 };
  editor.preview = new Map();
  editor.guides = [];
  editor.gaps = [];
  editor.marquee = undefined;
}

/** Moves the selection, or copies of it. */
export function moveDrag(editor: Editor, start: Point): Drag {
  const parts = editor.movable;
  const around = boxAround(parts);
  const targets = targetsFor(editor);
  return {
    move(at, keys) {
      if (!around) return;
      let dx = at.x - start.x;
      let dy = at.y - start.y;
      if (keys.shift) {
        if (Math.abs(dx) > Math.abs(dy)) dy = 0;
        else dx = 0;
      }
      const box = { ...around, x: Math.round(around.x + dx), y: Math.round(around.y + dy) };
      const snapped = snapMove(box, targets, settings(editor, keys));
      const shiftX = keys.shift && dx === 0 ? 0 : box.x + snapped.dx - around.x;
      const shiftY = keys.shift && dy === 0 ? 0 : box.y + snapped.dy - around.y;
      editor.shift = { x: shiftX, y: shiftY };
      editor.isMoving = true;
      editor.isCopying = keys.copy;
      editor.guides = snapped.guides;
      editor.gaps = snapped.gaps;
    },
    end() {
      const { isCopying, shift } = editor;
      const { x, y } = shift;
      clear(editor);
      if (!x && !y) return;
      if (isCopying) editor.duplicate(shift, parts);
      else editor.placeBoxes(new Map(parts.map((one) => [one.id, { ...one, x: one.x + x, y: one.y + y }])));
    },
    cancel: () => clear(editor),
  };
}

/** Resizes the selection by one of its handles. */
export function resizeDrag(editor: Editor, handle: Handle, start: Point): Drag {
  const parts = editor.movable;
  const around = boxAround(parts);
  const targets = targetsFor(editor);
  const edgeX = handle.includes("w") ? "start" : handle.includes("e") ? "end" : "";
  const edgeY = handle.includes("n") ? "start" : handle.includes("s") ? "end" : "";
  return {
    move(at, keys) {
      if (!around) return;
      const dx = at.x - start.x;
      const dy = at.y - start.y;
      const free = resized(around, handle, dx, dy, componentSides.least, keys.shift);
      const snapped = keys.shift
        ? { dx: 0, dy: 0, guides: [] }
        : snapEdges(free, edgeX, edgeY, targets, settings(editor, keys));
      const box = keys.shift
        ? free
        : resized(
            around,
            handle,
            snappedShift(free, around, edgeX, "x") + snapped.dx,
            snappedShift(free, around, edgeY, "y") + snapped.dy,
            componentSides.least,
          );
      editor.preview = new Map(
        parts.map((one) => [one.id, parts.length === 1 ? box : scaledInto(one, around, box, componentSides.least)]),
      );
      editor.guides = snapped.guides;
    },
    end() {
      const { preview } = editor;
      clear(editor);
      if (preview.size) editor.placeBoxes(preview);
    },
    cancel: () => clear(editor),
  };
}

/** How far the moved edge is from its original place. */
function snappedShift(now: Box, before: Box, edge: "start" | "end" | "", axis: "x" | "y"): number {
  const size = axis === "x" ? "width" : "height";
  if (edge === "start") return now[axis] - before[axis];
  return edge === "end" ? now[axis] + now[size] - before[axis] - before[size] : 0;
}

/** Draws a component of the armed kind; one that is smaller than components can be gets the least size. */
export function drawDrag(editor: Editor, start: Point, type: ComponentType): Drag {
  let box: Box | undefined;
  return {
    move(at, keys) {
      const { grid } = settings(editor, keys);
      const snap = (value: number) => (grid ? Math.round(value / grid) * grid : Math.round(value));
      const snapped = ({ x, y }: Point) => ({ x: snap(x), y: snap(y) });
      const drawn = boxBetween(snapped(start), snapped(at));
      const { least, most } = componentSides;
      const side = (length: number) => Math.min(most, Math.max(least, length));
      box = { ...drawn, width: side(drawn.width), height: side(drawn.height) };
      editor.marquee = box;
    },
    end() {
      clear(editor);
      if (box) editor.add(type, box);
    },
    cancel: () => clear(editor),
  };
}

/** Selects everything that a rectangle touches. */
export function marqueeDrag(editor: Editor, start: Point, more: boolean): Drag {
  const before = more ? editor.selection : new Set<number>();
  const hit = (box: Box): Component[] => editor.components.filter((one) => !one.locked && overlaps(one, box));
  editor.selection = before;
  return {
    move(at) {
      const box = boxBetween(start, at);
      editor.marquee = box;
      editor.select([...before, ...hit(box).map((one) => one.id)]);
    },
    end: () => clear(editor),
    cancel() {
      clear(editor);
      editor.selection = before;
    },
  };
}
