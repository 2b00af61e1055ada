/** Aligning, distributing and stacking of components. */
import { boxAround, type Box } from "./geometry.ts";

export type Alignment = "left" | "center" | "right" | "top" | "middle" | "bottom";
export type Order = "front" | "forward" | "backward" | "back";

/** The boxes aligned at the box around all of them. */
export function aligned<Item extends Box>(items: readonly Item[], alignment: Alignment): Item[] {
  const around = boxAround(items);
  if (!around) return [];
  return items.map((item) => {
    switch (alignment) {
      case "left":
        return { ...item, x: around.x };
      case "center":
        return { ...item, x: Math.round(around.x + (around.width - item.width) / 2) };
      case "right":
        return { ...item, x: around.x + around.width - item.width };
      case "top":
        return { ...item, y: around.y };
      case "middle":
        return { ...item, y: Math.round(around.y + (around.height - item.height) / 2) };
      case "bottom":
        return { ...item, y: around.y + around.height - item.height };
    }
  });
}

/** The boxes with equal gaps between them; the outermost two stay where they are. */
export function distributed<Item extends Box>(items: readonly Item[], axis: "x" | "y"): Item[] {
  if (items.length < 3) return [...items];
  const size = axis === "x" ? "width" : "height";
  const sorted = [...items].sort((one, other) => one[axis] - other[axis]);
  const first = sorted[0]!;
  const last = sorted[sorted.length - 1]!;
  const taken = sorted.reduce((sum, item) => sum + item[size], 0);
  const gap = (last[axis] + last[size] - first[axis] - taken) / (sorted.length - 1);
  let place = first[axis];
  return sorted.map((item) => {
    const moved = { ...item, [axis]: Math.round(place) };
    place += item[size] + gap;
    return moved;
  });
}

/** The list with the chosen items moved in drawing order; they keep their order among themselves. */
export function reordered<Item>(items: readonly Item[], chosen: (item: Item) => boolean, order: Order): Item[] {
  if (order === "front") return [...items.filter((item) => !chosen(item)), ...items.filter(chosen)];
  if (order === "back") return [...items.filter(chosen), ...items.filter((item) => !chosen(item))];
  const result = [...items];
  const step = (at: number, to: number) => {
    const one = result[at]!;
    const other = result[to];
    if (other === undefined || !chosen(one) || chosen(other)) return;
    result[at] = other;
    result[to] = one;
  };
  if (order === "forward") for (let at = result.length - 2; at >= 0; --at) step(at, at + 1);
  else for (let at = 1; at < result.length; ++at) step(at, at - 1);
  return result;
}

/** The list with the item at one place moved to another. */
export function movedTo<Item>(items: readonly Item[], from: number, to: number): Item[] {
  const result = [...items];
  const [item] = result.splice(from, 1);
  if (item !== undefined) result.splice(Math.min(Math.max(to, 0), result.length), 0, item);
  return result;
}
