import { describe, expect, it } from "vitest";
import { freePlace } from "../../src/model/freePlace.ts";
import { snapGap } from "../../src/model/gaps.ts";
import type { Box } from "../../src/model/geometry.ts";

const box = (x: number, y = 0): Box => ({ x, y, width: 100, height: 50 });

describe("equal distances", () => {
  it.each<[string, Box, readonly Box[], number | undefined, string]>([
    ["between two", box(197), [box(0), box(401)], 201, "100-201 301-401"],
    ["after two", box(284, 20), [box(140), box(0)], 280, "100-140 240-280"],
    ["before two", box(2), [box(140), box(280)], 0, "100-140 240-280"],
    ["but not from afar", box(220), [box(0), box(400)], undefined, ""],
    ["nor in another row", box(197), [box(0, 60), box(400, 60)], undefined, ""],
  ])("are found %s", (_, moved, others, x, gaps) => {
    const hit = snapGap(moved, "x", others, 6);
    expect([hit && moved.x + hit.shift, (hit?.gaps ?? []).map((gap) => `${gap.from}-${gap.to}`).join(" ")]).toEqual([
      x,
      gaps,
    ]);
  });
});

describe("the next free place", () => {
  const seen = { x: 0, y: 0, width: 300, height: 200 };
  it.each<[string, readonly Box[], object]>([
    ["is beside what is there", [box(20, 20)], { x: 140, y: 20 }],
    ["is below a full line", [box(20, 20), box(150, 25)], { x: 20, y: 90 }],
    ["is on a background", [seen], { x: 20, y: 20 }],
    ["is close where room is short", [{ ...seen, height: 150 }], { x: 0, y: 150 }],
    ["goes down the diagonal on a full page", [{ ...seen, width: 250 }, box(250), box(250, 100)], { x: 20, y: 20 }],
  ])("%s", (_, others, expected) => {
    expect(freePlace({ width: 100, height: 50 }, seen, others, 10)).toEqual(expected);
  });
});
