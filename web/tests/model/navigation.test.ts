import { expect, it } from "vitest";
import { newPage } from "../../src/model/layout.ts";
import { edgesOf, isSpare, neighbour, pageToShow, stacked, stepOf, swipeStep } from "../../src/model/navigation.ts";
import { isRefused, readLayout } from "../../src/model/readLayout.ts";

const page = (id: string, place: unknown) => ({ ...newPage(id), id, place });
const layout = readLayout({
  form: "control pages",
  version: 1,
  pages: [page("f", "footer"), page("u", "popup"), page("h", "hidden"), page("a", "bar"), page("b", "something new")],
  panel: { swipe: 1, silence: "60" },
});
if (isRefused(layout)) throw new Error("refused");

it("what a document says of panels is read, and what nobody knows is dropped", () => {
  expect([layout.pages.map((one) => one.place), layout.panel]).toEqual([
    ["footer", "popup", "hidden", "bar", "bar"],
    { swipe: false, silence: 0 },
  ]);
});

it.each([
  ["a page", "b", false, { to: "page", id: "b" }],
  ["a pop-up", "u", false, { to: "popup", id: "u" }],
  ["a page, from a pop-up", "b", true, { to: "page", id: "b" }],
  ["the page below the pop-up", "a", true, { to: "close" }],
  ["back from a page", "back", false, { to: "back" }],
  ["back from a pop-up", "back", true, { to: "close" }],
  ["the footer", "f", false, { to: "nowhere" }],
  ["a deleted page", "x", false, { to: "nowhere" }],
])("a link leads to %s", (_, target, isAbove, step) => {
  expect(stepOf(layout, target, { page: "a", isAbove })).toEqual(step);
});

it("panels begin with a page of the bar, and swipe to those beside it", () => {
  expect(["", "h", "u", "f"].map((id) => pageToShow(layout, id)?.id)).toEqual(["a", "h", "a", "a"]);
  const ways: [string, number][] = [["a", 1], ["a", -1], ["b", -1], ["b", 1], ["h", 1]]; // prettier-ignore
  expect(ways.map(([id, by]) => neighbour(layout, id, by)?.id)).toEqual(["b", undefined, "a", undefined, undefined]);
});

it.each([
  ["to the left", -120, 10, 200, 1],
  ["to the right", 120, -30, 200, -1],
  ["too short", 70, 0, 200, 0],
  ["too steep", 120, 70, 200, 0],
  ["too slow", 200, 0, 900, 0],
])("a finger that moves %s", (_, x, y, ms, step) => {
  expect(swipeStep({ x, y }, ms)).toBe(step);
});

it("header and footer stand around whole pages that want them, the first of each", () => {
  const pages = [page("s", "bar"), page("h1", "header"), page("h2", "header"), page("u", "popup"), page("b", "hidden")];
  const around = { ...layout, pages: pages.map((one) => ({ ...one, isBare: one.id === "b" })) } as typeof layout;
  expect(around.pages.map((one) => edgesOf(around, one).header?.id)).toEqual(["h1", ...Array<undefined>(4)]);
  expect(around.pages.filter((one) => isSpare(around, one)).map(({ id }) => id)).toEqual(["h2"]);
});

it.each([
  ["fills its screen with the page", [1280, 720], [1280, 80], [1280, 800], [1, 1, 80]],
  ["is as wide as the page", [1280, 720], [640, 40], [640, 900], [0.5, 1, 40]],
  ["leaves the page alone where there is none", [1000, 500], undefined, [1000, 250], [0.5, 0, 0]],
])("a header %s", (_, page, header, room, expected) => {
  const size = ([width, height]: number[]) => ({ width: width!, height: height! });
  const { scale, edges } = stacked(size(page), [header && size(header), undefined], size(room));
  expect([scale, edges[0]!.scale, edges[0]!.height]).toEqual(expected);
});
