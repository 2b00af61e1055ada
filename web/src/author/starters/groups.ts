/** Groups of components that many pages need, as they stand in the palette and on the pages to begin with. */
import { ta } from "../../i18n/author.ts";
import type { Box } from "../../model/geometry.ts";
import { newId } from "../../model/ids.ts";
import type { Component } from "../../model/layout.ts";
import { Builder, cells, columns, rows } from "./builder.ts";

/** Keys of the sentences that name sources. */
type Source = Extract<Parameters<typeof ta>[0], `word_${string}`>;

export function powerPair(builder: Builder, box: Box): void {
  const [on, off] = columns(box, [1, 1], builder.gap);
  builder.put("button", on!, ta("word_on"), { icon: "power", style: "primary" });
  builder.put("button", off!, ta("word_off"), { icon: "power", style: "danger" });
}

/** Four buttons, each with an icon. */
export function sourceGrid(builder: Builder, box: Box, sources: readonly (readonly [Source, icon: string])[]): void {
  const places = cells(box, 2, 2, builder.gap);
  sources.forEach(([word, icon], index) => builder.put("button", places[index]!, ta(word), { icon, style: "tile" }));
}

/** A slider and a switch: side by side, or one above the other where the box is high enough for that. */
export function volume(builder: Builder, box: Box): void {
  const isHigh = box.height > Math.max(130, box.width * 0.45);
  const [level, mute] = isHigh ? rows(box, [4, 3], builder.gap) : columns(box, [3, 2], builder.gap);
  builder.put("slider", level!, ta("word_volume"), { live: true });
  builder.put("switch", mute!, ta("word_mute"));
}

export function blinds(builder: Builder, box: Box): void {
  const [up, stop, down] = columns(box, [1, 1, 1], builder.gap);
  builder.put("button", up!, ta("word_up"), { icon: "up" });
  builder.put("button", stop!, ta("word_stop"), { icon: "pause" });
  builder.put("button", down!, ta("word_down"), { icon: "down" });
}

function keypad(builder: Builder, box: Box): void {
  const keys = ["1", "2", "3", "4", "5", "6", "7", "8", "9", "*", "0", "#"];
  const places = cells(box, 3, 4, builder.gap);
  keys.forEach((key, index) => builder.put("button", places[index]!, key, { fontSize: 28 }));
}

export const groupKeys = ["power", "sources", "volume", "keypad", "header"] as const;
export type GroupKey = (typeof groupKeys)[number];

const groups: Record<GroupKey, { width: number; height: number; fill: (builder: Builder, box: Box) => void }> = {
  power: {
    width: 400,
    height: 170,
    fill: (builder, box) => powerPair(builder, builder.section(box, ta("word_projector"))),
  },
  sources: {
    width: 400,
    height: 290,
    fill: (builder, box) =>
      sourceGrid(builder, builder.section(box, ta("word_source")), [
        ["word_laptop", "display"],
        ["word_computer", "display"],
        ["word_wireless", "people"],
        ["word_camera", "camera"],
      ]),
  },
  volume: {
    width: 560,
    height: 170,
    fill: (builder, box) => volume(builder, builder.section(box, ta("word_sound"))),
  },
  keypad: { width: 300, height: 360, fill: keypad },
  header: {
    width: 1240,
    height: 72,
    fill: (builder, box) => builder.header(box, ta("word_room"), "home"),
  },
};

/** A group, joined so that a click selects all of it; its left upper corner lies at 0, 0. */
export function groupComponents(key: GroupKey): Component[] {
  const { width, height, fill } = groups[key];
  const builder = new Builder(20);
  fill(builder, { x: 0, y: 0, width, height });
  const group = newId("g");
  return builder.components.map((one) => ({ ...one, group }));
}
