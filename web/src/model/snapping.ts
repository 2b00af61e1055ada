/** Snapping to other components, to the page and to the grid, with the guides that show it. */
import { type Gap, snapGap } from "./gaps.ts";
import type { Box } from "./geometry.ts";

/** A line to draw: `x` a vertical one at that x, `y` a horizontal one, from one end to the other. */
export interface Guide {
  readonly axis: "x" | "y";
  readonly at: number;
  readonly from: number;
  readonly to: number;
}

/** The edges and middles to which a drag can snap. Made once, when the drag begins. */
export interface SnapTargets {
  readonly page: { readonly width: number; readonly height: number };
  readonly others: readonly Box[];
}

export interface SnapSettings {
  /** Distance of the grid's lines; 0: no grid. */
  readonly grid: number;
  /** Distance within which an edge snaps, in px of the page; 0: no snapping to components. */
  readonly reach: number;
}

interface Hit {
  shift: number;
  at: number;
  other: Box;
}

const start = (box: Box, axis: "x" | "y") => box[axis];
const length = (box: Box, axis: "x" | "y") => (axis === "x" ? box.width : box.height);

function lines(box: Box, axis: "x" | "y"): number[] {
  const from = start(box, axis);
  const size = length(box, axis);
  return [from, from + size / 2, from + size];
}

/** How far a dragged box has to be shifted further, and the guides that show why. */
export function snapMove(
  box: Box,
  targets: SnapTargets,
  settings: SnapSettings,
): { dx: number; dy: number; guides: Guide[]; gaps: Gap[] } {
  const x = snapPlace(box, "x", targets, settings);
  const y = snapPlace({ ...box, x: box.x + x.shift }, "y", targets, settings);
  const moved = { ...box, x: box.x + x.shift, y: box.y + y.shift };
  return {
    dx: x.shift,
    dy: y.shift,
    guides: [...guidesOf(moved, "x", x.hit), ...guidesOf(moved, "y", y.hit)],
    gaps: [...x.gaps, ...y.gaps],
  };
}

/** To an edge or a middle, or to an equal distance when that is nearer or at the same place. */
function snapPlace(
  box: Box,
  axis: "x" | "y",
  targets: SnapTargets,
  settings: SnapSettings,
): { shift: number; hit?: Hit | undefined; gaps: readonly Gap[] } {
  const edge = snapAxis(box, axis, lines(box, axis), targets, settings);
  const gap = settings.reach > 0 ? snapGap(box, axis, targets.others, settings.reach) : undefined;
  if (!gap || (edge.hit && Math.abs(edge.shift) < Math.abs(gap.shift))) return { ...edge, gaps: [] };
  return { shift: gap.shift, hit: edge.shift === gap.shift ? edge.hit : undefined, gaps: gap.gaps };
}

/** How far the moved edges of a box have to be shifted further. `edgeX` and `edgeY`: which of them move. */
export function snapEdges(
  box: Box,
  edgeX: "start" | "end" | "",
  edgeY: "start" | "end" | "",
  targets: SnapTargets,
  settings: SnapSettings,
): { dx: number; dy: number; guides: Guide[] } {
  const edge = (axis: "x" | "y", which: "start" | "end") =>
    which === "start" ? lines(box, axis)[0]! : lines(box, axis)[2]!;
  const x = edgeX ? snapAxis(box, "x", [edge("x", edgeX)], targets, settings) : { shift: 0 };
  const y = edgeY ? snapAxis(box, "y", [edge("y", edgeY)], targets, settings) : { shift: 0 };
  return { dx: x.shift, dy: y.shift, guides: [...guidesOf(box, "x", x.hit), ...guidesOf(box, "y", y.hit)] };
}

function snapAxis(
  box: Box,
  axis: "x" | "y",
  own: readonly number[],
  targets: SnapTargets,
  settings: SnapSettings,
): { shift: number; hit?: Hit } {
  let best: Hit | undefined;
  const page = { x: 0, y: 0, ...targets.page };
  for (const other of settings.reach > 0 ? [...targets.others, page] : []) {
    for (const at of lines(other, axis)) {
      for (const line of own) {
        const shift = at - line;
        if (Math.abs(shift) <= settings.reach && (!best || Math.abs(shift) < Math.abs(best.shift))) {
          best = { shift, at, other };
        }
      }
    }
  }
  if (best) {
    // Positions are whole numbers: a middle between two px snaps to the nearest one, and stays visible as hit.
    return { shift: Math.round(own[0]! + best.shift) - own[0]!, hit: best };
  }
  const first = own.length === 1 ? own[0]! : start(box, axis);
  return { shift: settings.grid > 0 ? Math.round(first / settings.grid) * settings.grid - first : 0 };
}

function guidesOf(box: Box, axis: "x" | "y", hit: Hit | undefined): Guide[] {
  if (!hit) return [];
  const across = axis === "x" ? "y" : "x";
  const ends = [
    lines(box, across)[0]!,
    lines(box, across)[2]!,
    lines(hit.other, across)[0]!,
    lines(hit.other, across)[2]!,
  ];
  return [{ axis, at: hit.at, from: Math.min(...ends), to: Math.max(...ends) }];
}
