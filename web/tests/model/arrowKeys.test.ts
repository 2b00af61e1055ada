import { expect, it } from "vitest";
import { placeAfter } from "../../src/author/shell/arrowKeys.ts";

it("the vertical arrows stay free in a row of tabs, and Enter and the space bar everywhere", () => {
  const keys = [placeAfter("ArrowDown", "tablist", 0, 3), placeAfter("Enter", "tablist", 1, 3)];
  expect([...keys, placeAfter(" ", "radiogroup", 1, 3)]).toEqual([undefined, undefined, undefined]);
});
