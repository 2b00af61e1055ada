import { describe, expect, it } from "vitest";
import { contrast, inkFor, mixed, readable } from "../../src/model/colors.ts";
import { designOf, readProjectTheme, themeColors, themeNames } from "../../src/model/projectTheme.ts";

describe("the theme of a project", () => {
  it.each([
    [undefined, undefined],
    ["slate", undefined],
    [{ name: "none such", accent: "#ffffff" }, undefined],
    [{ name: "toString" }, undefined],
    [{ name: "slate", accent: "red;background:url(//x)", from: "#12", angle: "9", depth: NaN }, { name: "slate" }],
    [
      { name: "paper", accent: "#ABCDEF80", angle: 999, depth: -4, glow: 1e9, material: "m", ink: "#000000" },
      { name: "paper", accent: "#ABCDEF", angle: 360, depth: 0, glow: 40, material: "m" },
    ],
  ])("is read with checks: %j", (stored, read) => expect(readProjectTheme(stored)).toEqual(read));

  const inks = [
    ["ink", ["surface", "part", "accent-soft", "bad-soft", "part-held", "part-on"]],
    ["ink-soft", ["surface", "part"]],
    ["page-ink", ["from", "middle", "to"]],
    ["page-ink-soft", ["from", "middle", "to"]],
    ["accent-text", ["from", "middle", "to", "part"]],
    ["bad-text", ["from", "middle", "to", "part"]],
    ["accent-ink", ["accent"]],
  ] as const;

  it.each(themeNames.flatMap((name) => ["", "#3a5f8a", "#e0d020"].map((accent) => [name, accent] as const)))(
    "%s can be read, with the accent %j",
    (name, accent) => {
      const design = designOf({ name, ...(accent && { accent }) });
      const { from, to } = design;
      const colors: Record<string, string> = { ...themeColors(design), from, to, middle: mixed(from, to, 0.5) };
      const poor = inks.flatMap(([ink, surfaces]) =>
        surfaces.filter((one) => contrast(colors[ink]!, colors[one]!) < readable).map((one) => `${ink} on ${one}`),
      );
      expect(poor).toEqual([]);
    },
  );

  it("finds an ink for every accent", () => {
    for (let grey = 0; grey < 256; grey++) {
      const accent = `#${grey.toString(16).padStart(2, "0").repeat(3)}`;
      expect(contrast(inkFor([accent]), accent)).toBeGreaterThanOrEqual(readable);
    }
  });
});
