/** Converts a component's look to the style of its element. */
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
  if (!active || !hasStates(component)) return look;
  const given = Object.entries(component.activeLook).filter(([, value]) => value !== "");
  return { ...look, ...Object.fromEntries(given) };
}

/** Style of the element: place, size and the fields of the look; the rest comes from the theme. */
export function styleOf(component: Component, look: Look): string {
  const ink = look.color || (look.fill && inkOn(look.fill));
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
  const [red = 0, green = 0, blue = 0] = [1, 3, 5].map((at) => {
    const part = parseInt(fill.slice(at, at + 2), 16) / 255;
    return part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
  });
  const luminance = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  return luminance > 0.179 ? "#0b1116" : "#ffffff";
}
