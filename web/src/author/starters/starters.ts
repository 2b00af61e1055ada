/** Pages to begin with: for each common room or device one that works in every size once it has its commands. */
import { ta } from "../../i18n/author.ts";
import type { Box } from "../../model/geometry.ts";
import { type Component, newPage, type Page } from "../../model/layout.ts";
import { Builder, cells, columns, rows } from "./builder.ts";
import { blinds, powerPair, sourceGrid, volume } from "./groups.ts";

export const starterKeys = ["projector", "matrix", "lights", "meeting"] as const;
export type StarterKey = (typeof starterKeys)[number];

interface Room {
  readonly builder: Builder;
  /** What the sections divide among themselves. */
  readonly box: Box;
  /** Whether the page is higher than wide. */
  readonly isUpright: boolean;
}

const icons: Record<StarterKey, string> = {
  projector: "projector",
  matrix: "matrix",
  lights: "lamp",
  meeting: "people",
};
const sections: Record<StarterKey, (room: Room) => void> = { projector, matrix, lights, meeting };

/** The components of a starter, laid out for a page of this size. */
export function starterComponents(key: StarterKey, width: number, height: number): Component[] {
  const isUpright = height > width;
  const gap = Math.round(Math.min(width, height) / (isUpright ? 32 : 40));
  const builder = new Builder(gap);
  const margin = Math.round(gap * (isUpright ? 1 : 1.6));
  const whole = { x: margin, y: margin, width: width - 2 * margin, height: height - 2 * margin };
  const [top, box] = rows(whole, isUpright ? [1, 13] : [1, 9], gap);
  builder.header(top!, ta(`starter_${key}`), icons[key]);
  sections[key]({ builder, box: box!, isUpright });
  return builder.components;
}

export function starterPage(key: StarterKey, width: number, height: number): Page {
  return { ...newPage(ta(`starter_${key}`), width, height), components: starterComponents(key, width, height) };
}

function projector({ builder, box, isUpright }: Room): void {
  const { gap } = builder;
  const [power, source, picture, sound] = isUpright
    ? rows(box, [5, 9, 5, 8], gap)
    : columns(box, [1, 1], gap).flatMap((column, index) => rows(column, index ? [3, 2] : [2, 3], gap));
  const [second, third] = isUpright ? [source!, picture!] : [picture!, source!];
  powerPair(builder, builder.section(power!, ta("word_power")));
  sourceGrid(builder, builder.section(second, ta("word_source")), [
    ["word_laptop", "display"],
    ["word_computer", "display"],
    ["word_wireless", "people"],
    ["word_documentCamera", "camera"],
  ]);
  const [blank, freeze] = (isUpright ? columns : rows)(builder.section(third, ta("word_picture")), [1, 1], gap);
  builder.put("switch", blank!, ta("word_blank"));
  builder.put("switch", freeze!, ta("word_freeze"));
  volume(builder, builder.section(sound!, ta("word_sound")));
}

function matrix({ builder, box, isUpright }: Room): void {
  const { gap } = builder;
  const outputs = ["word_projector", "word_display", "word_stream", "word_preview"] as const;
  const inputs = ["word_laptop", "word_computer", "word_camera", "word_player"] as const;
  const [routes, presets] = rows(box, isUpright ? [5, 1.2] : [4, 1], gap);
  const places = isUpright ? cells(routes!, 1, outputs.length, gap) : cells(routes!, outputs.length, 1, gap);
  places.forEach((place, index) => {
    const inside = builder.section(place, ta(outputs[index]!));
    const buttons = isUpright ? cells(inside, inputs.length, 1, gap) : cells(inside, 1, inputs.length, gap);
    inputs.forEach((word, at) => builder.put("button", buttons[at]!, ta(word), isUpright ? {} : { style: "tile" }));
  });
  const [all, none] = columns(builder.section(presets!, ta("word_allOutputs")), [1, 1], gap);
  builder.put("button", all!, ta("word_laptopEverywhere"), { style: "primary" });
  builder.put("button", none!, ta("word_nothing"), { style: "quiet" });
}

function lights({ builder, box, isUpright }: Room): void {
  const { gap } = builder;
  const [scenes, zones] = isUpright ? rows(box, [2, 5], gap) : columns(box, [2, 5], gap);
  const all = [
    ["word_bright", "lamp", "primary"],
    ["word_presentation", "projector", "tile"],
    ["word_film", "play", "tile"],
    ["word_allOff", "power", "danger"],
  ] as const;
  const inScenes = builder.section(scenes!, ta("word_scenes"));
  const places = isUpright ? cells(inScenes, 2, 2, gap) : cells(inScenes, 1, 4, gap);
  all.forEach(([word, icon, style], index) => builder.put("button", places[index]!, ta(word), { icon, style }));
  const names = ["word_stage", "word_audience", "word_board", "word_entrance"] as const;
  for (const [index, zone] of cells(zones!, 1, names.length, gap).entries()) {
    const [onOff, level] = columns(builder.section(zone, ta(names[index]!)), isUpright ? [4, 5] : [1, 2], gap);
    builder.put("switch", onOff!, ta("word_on"));
    builder.put("slider", level!, isUpright ? "" : ta("word_brightness"), { live: true });
  }
}

function meeting({ builder, box, isUpright }: Room): void {
  const { gap } = builder;
  const parts = isUpright
    ? rows(box, [4, 8, 6, 4.5], gap)
    : columns(box, [5, 4], gap).flatMap((column, index) => rows(column, index ? [4, 3] : [2, 5], gap));
  const [session, source, sound, room] = parts;
  const [start, end] = columns(session!, [2, 1], gap);
  builder.put("button", start!, ta("word_startMeeting"), { icon: "play", style: "primary" });
  builder.put("button", end!, ta("word_endMeeting"), { icon: "power", style: "danger" });
  sourceGrid(builder, builder.section(source!, ta("word_source")), [
    ["word_laptop", "display"],
    ["word_wireless", "people"],
    ["word_videoCall", "camera"],
    ["word_player", "play"],
  ]);
  volume(builder, builder.section(sound!, ta("word_sound")));
  blinds(builder, builder.section(room!, ta("word_blinds")));
}
