/** Making own blocks, and what a project uses in them. */
import { newId } from "./ids.ts";
import { type Interactions, mapCommands, readInteractions, writeInteractions } from "./interactions.ts";
import { type Interface, interfaceName } from "./interfaces.ts";
import { type Component, type Layout, looksOf } from "./layout.ts";
import { atCorner, type Block, blockLimits } from "./readBlocks.ts";

/** A block of these components; locked ones can be moved where it is put. */
export function newBlock(
  name: string,
  components: readonly Component[],
  interactions: Interactions,
  interfaces: readonly Interface[],
): Block {
  const names = new Map(interfaces.map((one) => [one.nodeId, interfaceName(one)]));
  const named = mapCommands(interactions, (command) => ({
    ...command,
    interfaceName: names.get(command.portIndex) ?? command.interfaceName,
  }));
  const parts = components.map((one) => ({ ...one, locked: false }));
  return {
    id: newId("b"),
    name: name.trim().slice(0, blockLimits.name),
    components: atCorner(parts),
    interactions: readInteractions(writeInteractions(named, parts)),
  };
}

/** The layout with these blocks. Without any it is the same as one that never had some. */
export function withBlocks({ blocks: _, ...layout }: Layout, blocks: readonly Block[]): Layout {
  return blocks.length ? { ...layout, blocks } : layout;
}

/** The blocks that show a material. */
export function blocksOfMaterial(layout: Layout, materialId: string): readonly Block[] {
  const shows = (one: Component) => looksOf(one).some((look) => look.material === materialId);
  return (layout.blocks ?? []).filter((block) => block.components.some(shows));
}
