import icons from "virtual:icons";
import { describe, expect, it } from "vitest";
import { asIcon, isIconPath, placeInGrid, searchIcons } from "../../src/model/icons.ts";

describe("a stored icon", () => {
  it.each([
    ["power", "power"],
    ["M12 3v9M6.3 6.8a8 8 0 1 0 11.4 0", "M12 3v9M6.3 6.8a8 8 0 1 0 11.4 0"],
    ['M1 1"/><script>', ""],
    ["M1 1 url(#a)", ""],
    ["L1 1", ""],
    ["../power", ""],
  ])("%s is read as %s", (stored, read) => expect(asIcon(stored)).toBe(read));

  it("is not read when it is longer than any icon", () => expect(asIcon("M1".repeat(2001))).toBe(""));
});

describe("the library", () => {
  it("has hundreds of icons that a document can hold, with terms in both languages", () => {
    expect(icons.length).toBeGreaterThan(400);
    const unfit = icons.filter(
      (icon) => !isIconPath(icon.path) || !/\p{Script=Han}/u.test(icon.chinese) || !icon.english,
    );
    expect(unfit).toEqual([]);
  });

  it.each([
    ["projector", "device-projector"],
    ["投影", "device-projector"],
    ["Volume 3", "volume-3"],
    ["话筒 静音", "microphone-off"],
    ["shutdown", "power"],
  ])("finds by %s the icon %s", (search, name) => {
    expect(searchIcons(icons, search).map((icon) => icon.name)).toContain(name);
  });

  it("puts icons of that name before those with the word among their terms", () => {
    expect(searchIcons(icons, "home")[0]!.name).toBe("home");
    expect(searchIcons(icons, "qqqq")).toEqual([]);
  });
});

it.each([
  ["ArrowDown", 2, 6],
  ["ArrowUp", 2, undefined],
  ["ArrowRight", 9, undefined],
  ["End", 0, 9],
  ["a", 3, undefined],
])("%s leads in a grid of 4 columns from %i to %s", (key, from, to) => expect(placeInGrid(key, from, 10, 4)).toBe(to));
