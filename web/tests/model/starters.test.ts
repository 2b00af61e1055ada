import { describe, expect, it } from "vitest";
import { groupComponents, groupKeys } from "../../src/author/starters/groups.ts";
import { starterComponents, starterKeys } from "../../src/author/starters/starters.ts";
import { boxAround, overlaps } from "../../src/model/geometry.ts";
import { type Component, isActive } from "../../src/model/layout.ts";
import { touchSide } from "../../src/model/problems.ts";

/** What a finger can't hit, and what lies on something else than a group box. */
function faults(components: readonly Component[]): string[] {
  const parts = components.filter((one) => one.type !== "group");
  const small = parts.filter((one) => isActive(one.type) && Math.min(one.width, one.height) < touchSide);
  const covered = parts.filter((one, index) => parts.slice(index + 1).some((other) => overlaps(one, other)));
  return [...small.map((one) => `small: ${one.look.text}`), ...covered.map((one) => `covered: ${one.look.text}`)];
}

const sizes = [
  [1280, 800],
  [1920, 1080],
  [1024, 768],
  [390, 844],
  [360, 640],
] as const;

describe.each(starterKeys)("the starter %s", (key) => {
  it.each(sizes)("fits a page of %d x %d", (width, height) => {
    const components = starterComponents(key, width, height);
    expect(faults(components)).toEqual([]);
    const around = boxAround(components)!;
    expect(overlaps(around, { x: 0, y: 0, width, height })).toBe(true);
    expect([around.x >= 0, around.y >= 0]).toEqual([true, true]);
    expect([around.x + around.width <= width, around.y + around.height <= height]).toEqual([true, true]);
    expect(new Set(components.map((one) => one.id)).size).toBe(components.length);
  });
});

it.each(groupKeys)("the group %s is one, at its corner, for fingers", (key) => {
  const components = groupComponents(key);
  expect(faults(components)).toEqual([]);
  expect(new Set(components.map((one) => one.group)).size).toBe(1);
  expect(boxAround(components)).toMatchObject({ x: 0, y: 0 });
});
