import { describe, expect, it } from "vitest";
import { contrast, inkFor, mixed, readable } from "../../src/model/colors.ts";
import { emptyLook, newComponent } from "../../src/model/layout.ts";
import { mostColors, readPalette } from "../../src/model/palette.ts";
import { withPages } from "../../src/model/project.ts";
import { withLookOfAll } from "../../src/model/projectLook.ts";
import { designOf, readProjectTheme, themeColors, themeNames } from "../../src/model/projectTheme.ts";
import { sampleProject } from "../support/projects.ts";

describe("the look of a project", () => {
  it("has a palette of colours alone, each once, and not too many", () => {
    expect(readPalette(["#FF8800", "#ff8800", "red", 7, "#11223344", "url(x)"])).toEqual(["#ff8800", "#11223344"]);
    const many = Array.from({ length: 99 }, (_, index) => `#0000${String(index).padStart(2, "0")}`);
    expect(readPalette(many)).toHaveLength(mostColors);
  });

  it("is given to all of a kind, on a page or on all, without text, icon, picture and size", () => {
    const [hall] = sampleProject().layout.pages;
    const text = { ...newComponent("text", 0, 0, "Title"), id: 8 };
    const project = withPages(sampleProject(), [
      hall!,
      { ...hall!, id: "other", components: [text, hall!.components[1]!] },
    ]);
    const model = {
      ...hall!.components[0]!,
      style: "tile" as const,
      fontFamily: "mono" as const,
      width: 9,
      look: { ...emptyLook, text: "Mine", fill: "#112233", icon: "power", material: "m1" },
    };
    const { project: next, changed } = withLookOfAll(project, model);
    expect(changed).toBe(4);
    expect(next.layout.pages[0]!.components[1]).toEqual({
      ...hall!.components[1],
      style: "tile",
      fontFamily: "mono",
      look: { ...hall!.components[1]!.look, fill: "#112233" },
    });
    expect(next.layout.pages[1]!.components[0]).toBe(text);
    expect(withLookOfAll(next, model).changed).toBe(0);
    expect(withLookOfAll(project, model, "other").changed).toBe(1);
  });
});

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
