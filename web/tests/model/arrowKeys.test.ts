import { expect, it } from "vitest";
import { type GroupRole, placeAfter } from "../../src/author/shell/arrowKeys.ts";

it.each<[GroupRole, string, number, number | undefined]>([
  ["tablist", "ArrowRight", 0, 1],
  ["tablist", "ArrowRight", 2, 0],
  ["tablist", "ArrowLeft", 0, 2],
  ["tablist", "ArrowDown", 0, undefined],
  ["tablist", "Home", 2, 0],
  ["tablist", "End", 0, 2],
  ["tablist", "Enter", 1, undefined],
  ["radiogroup", "ArrowDown", 1, 2],
  ["radiogroup", "ArrowUp", 0, 2],
  ["radiogroup", "ArrowLeft", 1, 0],
  ["radiogroup", " ", 1, undefined],
])("in a %s of three, %j leads from place %i to %s", (role, key, from, to) => {
  expect(placeAfter(key, role, from, 3)).toBe(to);
});
