/** Where a new component finds room among others. */
import { type Box, overlaps, type Point } from "./geometry.ts";

/** Distance to what is there already, in px of the page; less where the room is short. */
const distances = [20, 0];

/**
 * The first place, line by line, at which the box overlaps none of the others; without one, the first corner on the
 * diagonal that none of them has.
 * @param seen  the part of the page in which it is looked for; what covers all of that part counts as background
 * @param grid  the place's distance from the page's corner is a multiple of it; at least 1
 */
export function freePlace(
  size: { readonly width: number; readonly height: number },
  seen: Box,
  others: readonly Box[],
  grid: number,
): Point {
  const [right, bottom] = [seen.x + seen.width, seen.y + seen.height];
  const parts = others.filter((one) => !covers(one, seen));
  const onGrid = (value: number) => Math.ceil(value / grid) * grid;
  for (const distance of distances) {
    for (let y = onGrid(seen.y + distance); y + size.height <= bottom; y += grid) {
      let x = onGrid(seen.x + distance);
      while (x + size.width <= right) {
        const wanted = {
          x: x - distance,
          y: y - distance,
          width: size.width + 2 * distance,
          height: size.height + 2 * distance,
        };
        const hit = parts.find((one) => overlaps(one, wanted));
        if (!hit) return { x, y };
        x = onGrid(Math.max(x + 1, hit.x + hit.width + distance));
      }
    }
  }
  let [x, y] = [onGrid(seen.x), onGrid(seen.y)];
  while (others.some((one) => one.x === x && one.y === y)) [x, y] = [x + 2 * grid, y + 2 * grid];
  return { x, y };
}

function covers(box: Box, other: Box): boolean {
  return (
    box.x <= other.x &&
    box.y <= other.y &&
    box.x + box.width >= other.x + other.width &&
    box.y + box.height >= other.y + other.height
  );
}
