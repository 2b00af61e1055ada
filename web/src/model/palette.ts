/** The project's own colours, offered wherever a colour is chosen; a part of the layout document. */
import { asColor } from "./colors.ts";
import { asArray } from "./json.ts";

export const mostColors = 24;

/** The colours in a stored document, each once, in small letters. */
export function readPalette(value: unknown): string[] {
  const colors = asArray(value).map((one) => asColor(one).toLowerCase());
  return [...new Set(colors.filter(Boolean))].slice(0, mostColors);
}
