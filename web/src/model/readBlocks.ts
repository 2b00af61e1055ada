/** An author's own blocks: components with their commands, kept in the layout document to be put on pages again. */
import { boxAround } from "./geometry.ts";
import { type Interactions, readInteractions, writeInteractions } from "./interactions.ts";
import { asArray, asObject, asText } from "./json.ts";
import type { Component } from "./layout.ts";

export interface Block {
  readonly id: string;
  readonly name: string;
  /** Never empty; the left upper corner of the box around them lies at 0, 0. */
  readonly components: readonly Component[];
  /** By the ids of the components. The commands name their interfaces; their node ids may be those of another time. */
  readonly interactions: Interactions;
}

/** As many blocks fit into a project, components into a block, and characters into its name. */
export const blockLimits = { blocks: 100, components: 500, name: 80 };

/** The blocks in a stored document. What can't be used, second ones of an id, and what is over the limits is left out. */
export function readBlocks(value: unknown, readComponent: (value: unknown) => Component | undefined): Block[] {
  const blocks = new Map<string, Block>();
  for (const from of asArray(value).map(asObject)) {
    const id = asText(from["id"]);
    if (!id || blocks.has(id) || blocks.size >= blockLimits.blocks) continue;
    const components = new Map<number, Component>();
    for (const one of asArray(from["components"]).slice(0, blockLimits.components)) {
      const component = readComponent(one);
      if (component && !components.has(component.id)) components.set(component.id, component);
    }
    const parts = [...components.values()];
    if (parts.length === 0) continue;
    const interactions = readInteractions(from["interactions"]);
    const own = Object.entries(interactions).filter(([of]) => components.has(Number(of)));
    const name = asText(from["name"]).trim().slice(0, blockLimits.name);
    blocks.set(id, { id, name, components: atCorner(parts), interactions: Object.fromEntries(own) });
  }
  return [...blocks.values()];
}

export function writeBlock({ interactions, ...block }: Block): object {
  return { ...block, interactions: writeInteractions(interactions, block.components) };
}

/** The components moved so that the left upper corner of the box around them lies at 0, 0. */
export function atCorner(components: readonly Component[]): Component[] {
  const corner = boxAround(components) ?? { x: 0, y: 0 };
  return components.map((one) => ({ ...one, x: one.x - corner.x, y: one.y - corner.y }));
}
