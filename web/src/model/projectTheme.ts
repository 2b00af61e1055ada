/**
 * The look of a project: a ready theme, and what its author has changed in it. A part of the layout document. It has
 * nothing to do with the light or dark appearance that each browser chooses for itself.
 */
import { asColor, inkFor, leastContrast, mixed, readable, readableColor } from "./colors.ts";
import { asNumber, asObject, asText } from "./json.ts";

/** A ready theme. All colours are #rrggbb. */
export interface ThemeDesign {
  readonly isDark: boolean;
  /** The page's background: a gradient, and its direction in degrees (180: from the top down). */
  readonly from: string;
  readonly to: string;
  readonly angle: number;
  /** Of bars and dialogs. */
  readonly surface: string;
  /** Of buttons, switches and sliders. */
  readonly part: string;
  readonly edge: string;
  readonly ink: string;
  readonly inkSoft: string;
  readonly accent: string;
  /** How far a pressed button sinks, in px of the page. */
  readonly depth: number;
  /** How far what is on or pressed shines, in px of the page. */
  readonly glow: number;
}

export const themeLimits = { depth: 8, glow: 40 };

const design = (isDark: boolean, colors: string, angle: number, depth: number, glow: number): ThemeDesign => {
  const [from, to, surface, part, edge, ink, inkSoft, accent] = colors.split(" ").map((one) => `#${one}`);
  return {
    isDark,
    from: from!,
    to: to!,
    angle,
    surface: surface!,
    part: part!,
    edge: edge!,
    ink: ink!,
    inkSoft: inkSoft!,
    accent: accent!,
    depth,
    glow,
  };
};

/** The colours in the order: from, to, surface, part, edge, ink, soft ink, accent. */
export const themeDesigns = {
  slate: design(true, "262d38 14181f 1b2029 323b48 465263 f3f6fa b4bfcc 6fb1ff", 165, 2, 14),
  ocean: design(true, "0d2b52 06122a 0a1c3a 123764 25568f eaf4ff a5c0df 2fd4f5", 160, 0, 30),
  forest: design(true, "1d3a31 0d1d18 122720 27493e 3d6557 f1f6ee b4c8bb e3b45c", 170, 3, 12),
  contrast: design(true, "000000 000000 000000 141414 ffffff ffffff e6e6e6 ffd60a", 180, 0, 0),
  paper: design(false, "f8f2e6 eadfcb fdf9f1 fffdf8 d8cab0 2c241a 655743 a3461f", 175, 3, 0),
  mist: design(false, "f1f5f9 d9e3ec ffffff ffffff c5d1dd 16222e 495a6b 1f5fd0", 180, 1, 10),
} as const;

export type ThemeName = keyof typeof themeDesigns;
export const themeNames = Object.keys(themeDesigns) as ThemeName[];

/** The theme of a project. Fields that are missing are as in the ready one. */
export interface ProjectTheme extends Partial<
  Pick<ThemeDesign, "accent" | "from" | "to" | "angle" | "depth" | "glow">
> {
  readonly name: ThemeName;
  /** Id of a material behind the components, in place of the gradient. */
  readonly material?: string;
}

/** The theme in a stored document; none when it has none, or one that is unknown here. */
export function readProjectTheme(value: unknown): ProjectTheme | undefined {
  const from = asObject(value);
  const name = themeNames.find((one) => one === from["name"]);
  if (!name) return undefined;
  const color = (key: "accent" | "from" | "to") => {
    const read = asColor(from[key]).slice(0, 7);
    return read && { [key]: read };
  };
  const number = (key: "angle" | "depth" | "glow", most: number) =>
    Number.isFinite(from[key]) && { [key]: Math.round(asNumber(from[key], themeDesigns[name][key], 0, most)) };
  const material = asText(from["material"]);
  return {
    name,
    ...color("accent"),
    ...color("from"),
    ...color("to"),
    ...number("angle", 360),
    ...number("depth", themeLimits.depth),
    ...number("glow", themeLimits.glow),
    ...(material && { material }),
  };
}

/** The ready theme with its author's changes. */
export function designOf({ name, material: _, ...own }: ProjectTheme): ThemeDesign {
  return { ...themeDesigns[name], ...own };
}

/** Every colour that a design leads to, by the name of its CSS variable without the dashes. */
export function themeColors(design: ThemeDesign) {
  const { isDark, from, to, surface, part, edge, ink, inkSoft, accent } = design;
  const page = [from, mixed(from, to, 0.5), to];
  const pageInk = inkFor(page, ink);
  const [bad, ok, warn] = isDark ? ["#ff8a80", "#5fd08f", "#f3bd63"] : ["#b3261e", "#10703c", "#8a5300"];
  const grounds = [...page, surface, part];
  const accentSoft = mixed(part, accent, isDark ? 0.2 : 0.14);
  const badSoft = mixed(part, bad, isDark ? 0.16 : 0.1);
  return {
    page: to,
    "page-ink": pageInk,
    ground: to,
    surface,
    raised: part,
    line: edge,
    "line-strong": mixed(edge, ink, 0.4),
    ink,
    "ink-soft": readableColor(inkSoft, ink, [surface, part]),
    "page-ink-soft": readableColor(inkSoft, pageInk, page),
    accent,
    "accent-ink": inkFor([accent]),
    "accent-soft": accentSoft,
    "accent-text": readableColor(accent, pageInk, grounds),
    bad,
    "bad-soft": badSoft,
    "bad-text": readableColor(bad, pageInk, grounds),
    ok,
    warn,
    "warn-soft": mixed(part, warn, 0.14),
    part,
    "part-ink": ink,
    "part-edge": edge,
    "part-held": mixed(part, accent, isDark ? 0.3 : 0.2),
    "part-on": accentSoft,
    track: mixed(part, ink, isDark ? 0.24 : 0.2),
  };
}

/** Whether texts on the page can be read everywhere on the gradient. A picture isn't looked at. */
export function isReadable(theme: ProjectTheme): boolean {
  const { from, to, ink } = designOf(theme);
  const page = [from, mixed(from, to, 0.5), to];
  return leastContrast(inkFor(page, ink), page) >= readable;
}
