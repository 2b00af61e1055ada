/** The layout for phones: how it is read, shown, changed and copied. */
import { describe, expect, it } from "vitest";
import { fitInto } from "../../src/model/geometry.ts";
import { copyPage, newComponent, newPage, type Page } from "../../src/model/layout.ts";
import { arrangedForPhone } from "../../src/model/phoneArrange.ts";
import { changedOnPhone } from "../../src/model/phoneEdit.ts";
import { onPhone, phoneScreen, readPhone } from "../../src/model/phoneLayout.ts";
import { touchSide } from "../../src/model/problems.ts";
import { withPage } from "../../src/model/project.ts";
import { sampleProject } from "../support/projects.ts";

const hall = sampleProject().layout.pages[0]!;
const place = { x: 12, y: 20, width: 200, height: 60, fontSize: 18, isHidden: false };
const phone = { width: 390, height: 700, places: { 1: place, 2: { ...place, isHidden: true } } };
const page: Page = { ...hall, phone };
const shape = ({ components }: Page) => components.map((one) => [one.id, one.x, one.y, one.width, one.fontSize]);

describe("the layout for phones", () => {
  it.each<[string, unknown, unknown]>([
    ["is missing", undefined, undefined],
    ["is no object", "390x700", undefined],
    ["is empty", {}, { ...phoneScreen, places: {} }],
    [
      "has hostile values, and a place of no component",
      { width: 1e9, height: "x", places: { 1: { x: "1;color:red", y: 1e9, width: -1, fontSize: 1e9 }, 99: place } },
      {
        width: 8000,
        height: 700,
        places: { 1: { x: 100, y: 100_000, width: 8, height: 50, fontSize: 400, isHidden: false } },
      },
    ],
  ])("is read when it %s", (_, value, expected) => {
    expect(readPhone(value, hall.components)).toEqual(expected);
  });

  it("hides what it hides, and puts what has no place below the rest, onto a higher page if need be", () => {
    expect(shape(onPhone(page))).toEqual([
      [1, 12, 20, 200, 18],
      [3, 12, 92, 100, 20],
    ]);
    expect(onPhone({ ...page, phone: { ...phone, height: 100 } }).height).toBe(154);
  });

  it("keeps places and sizes apart from those of the page, and shares all else", () => {
    const fresh = { ...newComponent("text", 30, 300), id: 4 };
    const changed = changedOnPhone(page, (shown) => ({
      ...shown,
      name: "Lobby",
      components: [{ ...shown.components[0]!, x: 99, fontSize: 30, radius: 3 }, fresh],
    }));
    expect(shape(changed)).toEqual([
      [1, 100, 100, 100, 20],
      [2, 300, 100, 100, 20],
      [4, 20, 20, 240, 20],
    ]);
    expect([changed.name, changed.width, changed.components[0]!.radius]).toEqual(["Lobby", 1000, 3]);
    expect(changed.phone!.places).toMatchObject({ 1: { x: 99, fontSize: 30 }, 2: { isHidden: true }, 4: { y: 300 } });
  });

  it("goes with a copy of the page, and loses the places of deleted components", () => {
    const copy = copyPage(page, "Copy");
    expect(shape(onPhone(copy.page)).map(([, ...box]) => box)).toEqual(shape(onPhone(page)).map(([, ...box]) => box));
    const project = withPage(sampleProject(), "hall", () => ({ ...page, components: page.components.slice(1) }));
    expect(Object.keys(project.layout.pages[0]!.phone!.places)).toEqual(["2"]);
  });

  it("is proposed in reading order, within the page, and large enough for fingers", () => {
    const part = (type: "button" | "slider" | "group", id: number, x: number, y: number, width = 180) => ({
      ...newComponent(type, x, y, "Text"),
      id,
      width,
    });
    const components = [
      part("group", 10, 20, 20, 860),
      ...Array.from({ length: 7 }, (_, at) => part("button", at + 1, 40 + 120 * at, 60, 100)),
      part("slider", 8, 40, 180, 400),
      part("button", 9, 40, 500),
    ];
    const wide = { ...newPage("Wide"), components };
    const shown = onPhone({ ...wide, phone: arrangedForPhone(wide) });
    const { scale } = fitInto(shown, phoneScreen);
    const active = shown.components.slice(1);
    expect(active.map((one) => Math.min(one.width, one.height) * scale >= touchSide)).toEqual(active.map(() => true));
    const inOrder = [...active].sort((one, other) => one.y - other.y || one.x - other.x);
    expect(inOrder.map((one) => one.id)).toEqual([1, 2, 3, 4, 5, 6, 7, 8, 9]);
    expect(Math.max(...active.map((one) => one.x + one.width))).toBeLessThanOrEqual(shown.width);
    const [frame] = shown.components;
    expect(active.filter((one) => one.y < frame!.y + frame!.height)).toHaveLength(8);
  });
});
