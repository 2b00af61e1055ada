import { describe, expect, it } from "vitest";
import { aligned, distributed, movedTo, reordered } from "../../src/model/arrange.ts";
import { fitInto, resized, scaledInto, targetAt } from "../../src/model/geometry.ts";
import { historySteps, redo, startHistory, step, undo } from "../../src/model/history.ts";
import { snapEdges, snapMove } from "../../src/model/snapping.ts";

const box = (x: number, y: number, width = 100, height = 50) => ({ x, y, width, height });

describe("what a press means", () => {
  const small = box(0, 0, 20, 20);
  const near = box(30, 0, 100, 100);
  const above = box(60, 60, 100, 100);
  const targets = [small, near, above];
  it.each([
    ["inside the small one", 10, 10, small],
    ["beside it", -10, 10, small],
    ["between two: the nearer", 22, 10, small],
    ["inside another though near the small one", 31, 10, near],
    ["the topmost of two", 70, 70, above],
    ["out of reach", -20, 10, undefined],
  ])("%s", (_, x, y, meant) => {
    expect(targetAt(targets, { x, y }, 48)).toBe(meant);
  });
});

describe("handles", () => {
  it.each([
    ["se", 10, 20, box(100, 100, 110, 70)],
    ["nw", 10, 20, box(110, 120, 90, 30)],
    ["n", 10, 20, box(100, 120, 100, 30)],
    ["w", 500, 0, box(192, 100, 8, 50)],
  ] as const)("%s by %i, %i", (handle, dx, dy, expected) => {
    expect(resized(box(100, 100), handle, dx, dy, 8)).toEqual(expected);
  });

  it("keep the proportions", () => {
    expect(resized(box(0, 0), "se", 100, 0, 8, true)).toEqual(box(0, 0, 200, 100));
  });

  it("scale a selection", () => {
    expect(scaledInto(box(50, 0, 50, 50), box(0, 0), box(0, 0, 200, 50), 8)).toEqual(box(100, 0, 100, 50));
  });
});

it("fits a page into a room", () => {
  expect(fitInto({ width: 1000, height: 500 }, { width: 500, height: 500 })).toEqual({ scale: 0.5, x: 0, y: 125 });
});

describe("snapping", () => {
  const targets = { page: { width: 1000, height: 800 }, others: [box(300, 300)] };
  it.each([
    ["a middle to the page's middle", box(448, 100), 10, 6, { dx: 2, dy: 0 }],
    ["components before the grid", box(202, 104), 10, 6, { dx: -2, dy: -4 }],
  ])("%s", (_, moved, grid, reach, expected) => {
    expect(snapMove(moved, targets, { grid, reach })).toMatchObject(expected);
  });

  it("draws the guide over both boxes", () => {
    const { guides } = snapMove(box(296, 104), targets, { grid: 0, reach: 6 });
    expect(guides).toEqual([{ axis: "x", at: 300, from: 104, to: 350 }]);
  });

  it("moves only the edges of the handle", () => {
    const snapped = snapEdges(box(100, 100, 197, 197), "end", "", targets, { grid: 0, reach: 6 });
    expect(snapped).toMatchObject({ dx: 3, dy: 0 });
  });
});

describe("arranging", () => {
  it("aligns and distributes", () => {
    expect(aligned([box(0, 0, 10, 10), box(50, 30, 30, 10)], "right").map(({ x }) => x)).toEqual([70, 50]);
    expect(aligned([box(0, 0, 10, 10), box(50, 30, 30, 20)], "middle").map(({ y }) => y)).toEqual([20, 15]);
    expect(distributed([box(0, 0, 10, 10), box(90, 0, 10, 10), box(15, 0, 20, 10)], "x").map(({ x }) => x)).toEqual([
      0, 40, 90,
    ]);
  });

  it.each([
    ["front", "acebd"],
    ["back", "bdace"],
    ["forward", "acbed"],
    ["backward", "badce"],
  ] as const)("stacks b and d to the %s", (order, expected) => {
    const chosen = (letter: string) => letter === "b" || letter === "d";
    expect(reordered([..."abcde"], chosen, order).join("")).toBe(expected);
  });

  it("moves one item", () => {
    expect(movedTo([..."abc"], 0, 1).join("") + movedTo([..."abc"], 2, -5).join("")).toBe("baccab");
  });
});

it("takes back a hundred steps, and forgets the future with a new one", () => {
  let history = startHistory(0);
  for (let state = 1; state <= historySteps + 20; ++state) history = step(history, state);
  for (let times = 0; times < 500; ++times) history = undo(history);
  expect(history.present).toBe(20);
  history = redo(redo(history));
  expect(history.present).toBe(22);
  history = step(history, -1);
  expect(redo(history).present).toBe(-1);
  expect(undo(history).present).toBe(22);
});
