/** Reading and writing of the layout document with all that authors keep in it; panels do without their blocks. */
import { withBlocks } from "./blocks.ts";
import { asObject } from "./json.ts";
import { type Layout, layoutVersion } from "./layout.ts";
import { readBlocks, writeBlock } from "./readBlocks.ts";
import { isRefused, layoutForm, readComponent, readLayout, type Refusal } from "./readLayout.ts";

export function readWholeLayout(value: unknown): Layout | Refusal {
  const layout = readLayout(value);
  return isRefused(layout) ? layout : withBlocks(layout, readBlocks(asObject(value)["blocks"], readComponent));
}

export function writeLayout(layout: Layout): object {
  const { blocks } = layout;
  return { form: layoutForm, version: layoutVersion, ...layout, ...(blocks && { blocks: blocks.map(writeBlock) }) };
}
