/** Equal distances: where a dragged box is as far from its neighbours as these are from each other. */
import type { Box } from "./geometry.ts";

type Axis = "x" | "y";

/** A distance that is shown: between two edges on this axis, at that height (or width) on the other one. */
export interface Gap {
  readonly axis: Axis;
  readonly at: number;
  readonly from: number;
  readonly to: number;
}

export interface GapHit {
  /** How far the box has to be shifted, in px; a whole number. */
  readonly shift: number;
  /** The distances that are equal then. */
  readonly gaps: readonly Gap[];
}

const side = { x: "width", y: "height" } as const;
const start = (box: Box, axis: Axis) => box[axis];
const end = (box: Box, axis: Axis) => box[axis] + box[side[axis]];

/** The nearest place within `reach` at which the distances to two neighbours in a row (or column) are equal. */
export function snapGap(box: Box, axis: Axis, others: readonly Box[], reach: number): GapHit | undefined {
  const across = axis === "x" ? "y" : "x";
  const row = others.filter((one) => start(one, across) < end(box, across) && start(box, across) < end(one, across));
  const middle = (one: Box) => start(one, axis) + one[side[axis]] / 2;
  const before = (of: Box) =>
    nearest(
      row.filter((one) => end(one, axis) <= start(of, axis)),
      (one) => -end(one, axis),
    );
  const after = (of: Box) =>
    nearest(
      row.filter((one) => start(one, axis) >= end(of, axis)),
      (one) => start(one, axis),
    );
  const left = nearest(
    row.filter((one) => middle(one) < middle(box)),
    (one) => -end(one, axis),
  );
  const right = nearest(
    row.filter((one) => middle(one) > middle(box)),
    (one) => start(one, axis),
  );
  const size = box[side[axis]];
  const places: { at: number; between: (moved: Box) => [Box, Box][] }[] = [];
  if (left && right) {
    const room = start(right, axis) - end(left, axis) - size;
    if (room > 0) {
      places.push({
        at: end(left, axis) + room / 2,
        between: (moved) => [
          [left, moved],
          [moved, right],
        ],
      });
    }
  }
  const further = left && before(left);
  if (left && further) {
    const at = end(left, axis) + start(left, axis) - end(further, axis);
    places.push({
      at,
      between: (moved) => [
        [further, left],
        [left, moved],
      ],
    });
  }
  const beyond = right && after(right);
  if (right && beyond) {
    const at = start(right, axis) - (start(beyond, axis) - end(right, axis)) - size;
    places.push({
      at,
      between: (moved) => [
        [moved, right],
        [right, beyond],
      ],
    });
  }
  const best = nearest(places, (one) => Math.abs(one.at - box[axis]));
  if (!best || Math.abs(best.at - box[axis]) > reach) return undefined;
  const shift = Math.round(best.at) - box[axis];
  const moved = { ...box, [axis]: box[axis] + shift };
  const gaps = best.between(moved).map(([one, other]) => ({
    axis,
    at: (Math.max(start(one, across), start(other, across)) + Math.min(end(one, across), end(other, across))) / 2,
    from: end(one, axis),
    to: start(other, axis),
  }));
  return { shift, gaps };
}

function nearest<One>(list: readonly One[], distance: (one: One) => number): One | undefined {
  let best: One | undefined;
  for (const one of list) if (best === undefined || distance(one) < distance(best)) best = one;
  return best;
}
