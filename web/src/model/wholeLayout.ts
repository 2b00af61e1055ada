/**
 * Reading and writing of the layout document with all that authors keep in it; panels do without their blocks, their
 * palette and the lists of what devices understand.
 */
import { withBlocks } from "./blocks.ts";
import { readDevices } from "./devices.ts";
import { asObject } from "./json.ts";
import { type Layout, layoutVersion } from "./layout.ts";
import { readPalette } from "./palette.ts";
import { readBlocks, writeBlock } from "./readBlocks.ts";
import { isRefused, layoutForm, readComponent, readLayout, type Refusal } from "./readLayout.ts";

export function readWholeLayout(value: unknown): Layout | Refusal {
  const layout = readLayout(value);
  if (isRefused(layout)) return layout;
  const document = asObject(value);
  const devices = readDevices(document["devices"]);
  const palette = readPalette(document["palette"]);
  const whole = { ...layout, ...(devices.length && { devices }), ...(palette.length && { palette }) };
  return withBlocks(whole, readBlocks(document["blocks"], readComponent));
}

export function writeLayout(layout: Layout): object {
  const { blocks } = layout;
  return { form: layoutForm, version: layoutVersion, ...layout, ...(blocks && { blocks: blocks.map(writeBlock) }) };
}
