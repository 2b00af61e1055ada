/** Components on the clipboard: text, so that they pass between pages, browser tabs and servers. */
import { copyComponents, type Component } from "./layout.ts";
import { type Interactions, readInteractions, writeInteractions } from "./interactions.ts";
import { asArray, asObject } from "./json.ts";
import { readComponent, refusal } from "./readLayout.ts";

const form = "control components";
const version = 1;

export interface Clip {
  readonly components: readonly Component[];
  readonly interactions: Interactions;
}

export function writeClip(components: readonly Component[], interactions: Interactions): string {
  return JSON.stringify({ form, version, components, interactions: writeInteractions(interactions, components) });
}

/** The components in a text of the clipboard, or nothing when it is some other text. */
export function readClip(text: string): Clip | undefined {
  try {
    const value: unknown = JSON.parse(text);
    if (refusal(value, form, version)) return undefined;
    const document = asObject(value);
    const components = asArray(document["components"]).flatMap((one) => readComponent(one) ?? []);
    return components.length ? { components, interactions: readInteractions(document["interactions"]) } : undefined;
  } catch {
    return undefined;
  }
}

/** The clip with new ids, shifted by this much, and the new id of each old one. */
export function pasted(clip: Clip, shift: number): { components: Component[]; ids: Map<number, number> } {
  const copied = copyComponents(clip.components);
  const components = copied.components.map((one) => ({ ...one, x: one.x + shift, y: one.y + shift, locked: false }));
  return { components, ids: copied.ids };
}
