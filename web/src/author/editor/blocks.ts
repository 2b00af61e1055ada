/** Ready groups and own blocks in the editor: put on the page, kept, renamed and deleted. */
import { ta } from "../../i18n/author.ts";
import { newBlock, withBlocks } from "../../model/blocks.ts";
import { type Block, blockLimits } from "../../model/readBlocks.ts";
import { fittedCommands } from "../../model/fitCommands.ts";
import { freePlace } from "../../model/freePlace.ts";
import { boxAround, type Point, scaledInto } from "../../model/geometry.ts";
import type { Interface } from "../../model/interfaces.ts";
import { type Component, componentSides, componentTitle, copyComponents } from "../../model/layout.ts";
import type { Application } from "../application.ts";
import { changeAndTell } from "../shell/changeAndTell.ts";
import type { Editor } from "./editor.svelte.ts";

/**
 * Puts copies of the components on the page, with their middle at that point or at the next free place. What is wider
 * than the page is fitted to its width.
 */
export function putBlock(
  editor: Editor,
  { components, interactions }: Pick<Block, "components" | "interactions">,
  interfaces: readonly Interface[],
  at?: Point,
): void {
  const around = boxAround(components);
  if (!around || !editor.page) return;
  const size = { ...around, width: Math.min(around.width, editor.page.width) };
  const place = at
    ? { x: editor.snap(at.x - size.width / 2), y: editor.snap(at.y - size.height / 2) }
    : freePlace(size, editor.seen(), editor.components, editor.snapsToGrid ? editor.grid : 1);
  const box = { ...size, ...place };
  const copied = copyComponents(components);
  editor.armed = undefined;
  editor.insert(
    copied.components.map((one) => ({ ...one, ...scaledInto(one, around, box, componentSides.least) })),
    copied.ids,
    fittedCommands(interactions, interfaces),
  );
}

/** The name that is proposed for a block of these components. */
export function firstText(components: readonly Component[]): string {
  return components.map(componentTitle).find((text) => text !== "") ?? "";
}

/** Whether these components can become one more block; if not, a notice says why. */
export function hasRoomForBlock({ store, notices }: Application, components: readonly Component[]): boolean {
  const isFull = (store.project.layout.blocks ?? []).length >= blockLimits.blocks;
  if (isFull) notices.tell("bad", ta("blockMost", blockLimits.blocks));
  else if (components.length > blockLimits.components) notices.tell("bad", ta("blockLarge", blockLimits.components));
  else return components.length > 0;
  return false;
}

export function keepBlock(app: Application, components: readonly Component[], name: string): void {
  if (!hasRoomForBlock(app, components)) return;
  const { project, interfaces } = app.store;
  const block = newBlock(name, components, project.interactions, interfaces);
  change(app, [...(project.layout.blocks ?? []), block], ta("blockSaved", block.name));
}

export function renameBlock(app: Application, { id }: Block, name: string): void {
  const blocks = (app.store.project.layout.blocks ?? []).map((one) => (one.id === id ? { ...one, name } : one));
  change(app, blocks, ta("blockRenamed", name));
}

export function deleteBlock(app: Application, { id, name }: Block): void {
  const blocks = (app.store.project.layout.blocks ?? []).filter((one) => one.id !== id);
  change(app, blocks, ta("blockDeleted", name));
}

function change(app: Application, blocks: readonly Block[], told: string): void {
  const { project } = app.store;
  changeAndTell(app, { ...project, layout: withBlocks(project.layout, blocks) }, told);
}
