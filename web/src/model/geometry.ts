/** Boxes on a page, in px. Pure functions; nothing here knows a screen. */

export interface Point {
  readonly x: number;
  readonly y: number;
}
export interface Box extends Point {
  readonly width: number;
  readonly height: number;
}

export function contains(box: Box, point: Point): boolean {
  return point.x >= box.x && point.x < box.x + box.width && point.y >= box.y && point.y < box.y + box.height;
}

export function overlaps(one: Box, other: Box): boolean {
  return (
    one.x < other.x + other.width &&
    other.x < one.x + one.width &&
    one.y < other.y + other.height &&
    other.y < one.y + one.height
  );
}

/** The box between two opposite corners. */
export function boxBetween(one: Point, other: Point): Box {
  return {
    x: Math.min(one.x, other.x),
    y: Math.min(one.y, other.y),
    width: Math.abs(one.x - other.x),
    height: Math.abs(one.y - other.y),
  };
}

/** The smallest box around all of them; nothing for none. */
export function boxAround(boxes: readonly Box[]): Box | undefined {
  if (boxes.length === 0) return undefined;
  const x = Math.min(...boxes.map((box) => box.x));
  const y = Math.min(...boxes.map((box) => box.y));
  const right = Math.max(...boxes.map((box) => box.x + box.width));
  const bottom = Math.max(...boxes.map((box) => box.y + box.height));
  return { x, y, width: right - x, height: bottom - y };
}

export function distanceTo(box: Box, point: Point): number {
  const dx = Math.max(box.x - point.x, 0, point.x - (box.x + box.width));
  const dy = Math.max(box.y - point.y, 0, point.y - (box.y + box.height));
  return Math.hypot(dx, dy);
}

/** The box, grown equally on all sides to at least this width and height. */
export function atLeast(box: Box, side: number): Box {
  const dx = Math.max(0, (side - box.width) / 2);
  const dy = Math.max(0, (side - box.height) / 2);
  return { x: box.x - dx, y: box.y - dy, width: box.width + 2 * dx, height: box.height + 2 * dy };
}

/**
 * The box that a press at this point means: the topmost (last) one that contains it, otherwise the nearest of those
 * that contain it once they are grown to `side`. So a small target is as easy to hit as a large one, and never takes a
 * press that lies inside another.
 */
export function targetAt<Target extends Box>(
  targets: readonly Target[],
  point: Point,
  side: number,
): Target | undefined {
  const inside = targets.findLast((target) => contains(target, point));
  if (inside) return inside;
  let nearest: Target | undefined;
  for (const target of targets) {
    if (!contains(atLeast(target, side), point)) continue;
    if (!nearest || distanceTo(target, point) <= distanceTo(nearest, point)) nearest = target;
  }
  return nearest;
}

/** The greatest scale at which a page fits, and its position then. */
export function fitInto(
  page: { width: number; height: number },
  room: { width: number; height: number },
): Point & { scale: number } {
  return centredIn(page, room, Math.max(0.01, Math.min(room.width / page.width, room.height / page.height)));
}

/** In the middle of a room, at this scale. */
export function centredIn(
  page: { width: number; height: number },
  room: { width: number; height: number },
  scale: number,
): Point & { scale: number } {
  return { scale, x: (room.width - page.width * scale) / 2, y: (room.height - page.height * scale) / 2 };
}

/** The eight handles: which edges each of them moves. */
export const handles = ["nw", "n", "ne", "e", "se", "s", "sw", "w"] as const;
export type Handle = (typeof handles)[number];

/**
 * The box after one of its handles was moved.
 * @param keepRatio  the sides stay in proportion (corners only)
 */
export function resized(box: Box, handle: Handle, dx: number, dy: number, least: number, keepRatio = false): Box {
  const west = handle.includes("w");
  const north = handle.includes("n");
  let width = box.width + (west ? -dx : handle.includes("e") ? dx : 0);
  let height = box.height + (north ? -dy : handle.includes("s") ? dy : 0);
  if (keepRatio && handle.length === 2) {
    const scale = Math.max(width / box.width, height / box.height);
    width = box.width * scale;
    height = box.height * scale;
  }
  width = Math.max(least, Math.round(width));
  height = Math.max(least, Math.round(height));
  return {
    x: west ? box.x + box.width - width : box.x,
    y: north ? box.y + box.height - height : box.y,
    width,
    height,
  };
}

/** Boxes of a selection after the box around it was resized: all keep their share. */
export function scaledInto(box: Box, from: Box, to: Box, least: number): Box {
  const scaleX = to.width / Math.max(1, from.width);
  const scaleY = to.height / Math.max(1, from.height);
  return {
    x: Math.round(to.x + (box.x - from.x) * scaleX),
    y: Math.round(to.y + (box.y - from.y) * scaleY),
    width: Math.max(least, Math.round(box.width * scaleX)),
    height: Math.max(least, Math.round(box.height * scaleY)),
  };
}
