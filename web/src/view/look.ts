/** Converts a component's look to the style of its element. */
import { luminance } from "../model/colors.ts";
import { type Component, type FontFamily, hasStates, type Look } from "../model/layout.ts";

/** The shipped families, as fonts.css names them. */
const fontFamilies: Record<Exclude<FontFamily, "">, string> = {
  sans: "Inter",
  condensed: "Sofia Sans Condensed",
  mono: "JetBrains Mono",
};

/** The families of a component's text, as CSS lists them; Chinese is found in the system's. */
export function fontStack({ fontFamily }: Component): string {
  return fontFamily ? `"${fontFamilies[fontFamily]}",var(--font)` : "var(--font)";
}

/** The look of a state: empty fields of the active look are those of the normal one. */
export function lookOf(component: Component, active: boolean): Look {
  const { look } = component;
  return active && hasStates(component) ? over(look, component.activeLook) : look;
}

/** A look, with the fields of another one that are not empty. */
export function over(look: Look, other: Look): Look {
  return { ...look, ...Object.fromEntries(Object.entries(other).filter(([, value]) => value !== "")) };
}

/** The classes of the element: its kind, and the style from the theme. */
export function partClass({ type, style }: Component): string {
  return `part is-${type}${style && ` as-${style}`}`;
}

/** Style of the element: place, size and the fields of the look; the rest comes from the theme. */
export function styleOf(component: Component, look: Look): string {
  const ink = look.color || (look.fill && component.type !== "lamp" && inkOn(look.fill));
  return [
    `left:${component.x}px;top:${component.y}px;width:${component.width}px;height:${component.height}px`,
    `font-size:${component.fontSize}px;border-radius:${component.radius}px;text-align:${component.align}`,
    component.fontFamily && `--family:${fontStack(component)}`,
    component.fontWeight && `--weight:${component.fontWeight}`,
    look.fill && `--fill:${look.fill}`,
    ink && `--ink-part:${ink}`,
    look.border && `--edge:${look.border}`,
  ]
    .filter(Boolean)
    .join(";");
}

/** Black or white, whichever stands out more on a colour. */
export function inkOn(fill: string): string {
  return luminance(fill) > 0.179 ? "#0b1116" : "#ffffff";
}
