/** Colours as numbers: mixing them, and how well one stands out on another. All are #rrggbb; an alpha is ignored. */

import { asText } from "./json.ts";

/** A colour as #rrggbb or #rrggbbaa, otherwise none: it goes into a style, where any other text could do harm. */
export function asColor(value: unknown): string {
  const text = asText(value);
  return /^#([0-9a-f]{6}|[0-9a-f]{8})$/i.test(text) ? text : "";
}

/** The least contrast of a text on its surface. */
export const readable = 4.5;

function partsOf(color: string): number[] {
  return [1, 3, 5].map((at) => parseInt(color.slice(at, at + 2), 16));
}

/** The first colour with that share (0 to 1) of the second. */
export function mixed(color: string, other: string, share: number): string {
  const others = partsOf(other);
  const parts = partsOf(color).map((part, index) => Math.round(part + (others[index]! - part) * share));
  return `#${parts.map((part) => part.toString(16).padStart(2, "0")).join("")}`;
}

/** Relative luminance, from 0 (black) to 1 (white). */
export function luminance(color: string): number {
  const [red = 0, green = 0, blue = 0] = partsOf(color).map((part) => {
    const share = part / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

/** From 1 (the same) to 21 (black on white). */
export function contrast(one: string, other: string): number {
  const [lesser = 0, greater = 0] = [luminance(one), luminance(other)].sort((a, b) => a - b);
  return (greater + 0.05) / (lesser + 0.05);
}

/** The least contrast of a colour with any of these. */
export function leastContrast(color: string, surfaces: readonly string[]): number {
  return Math.min(...surfaces.map((one) => contrast(color, one)));
}

/** The ink that can be read on all of these surfaces; if none can, the one that comes closest. */
export function inkFor(surfaces: readonly string[], ...wanted: string[]): string {
  const inks = [...wanted, "#ffffff", "#0b1116", "#000000"];
  const best = () =>
    inks.reduce((one, other) => (leastContrast(other, surfaces) > leastContrast(one, surfaces) ? other : one));
  return inks.find((one) => leastContrast(one, surfaces) >= readable) ?? best();
}

/** The colour, moved towards the ink until it can be read on all of these surfaces. */
export function readableColor(color: string, ink: string, surfaces: readonly string[]): string {
  const shares = Array.from({ length: 11 }, (_, index) => index / 10);
  const found = shares.map((share) => mixed(color, ink, share)).find((one) => leastContrast(one, surfaces) >= readable);
  return found ?? ink;
}
