/** Export and import of everything, or of one page, as one file. */
import { copyPage, emptyLayout, isActive, looksOf, type Page } from "./layout.ts";
import { valueNames } from "./binding.ts";
import { deviceIn, namesInDevice, withDevice } from "./equipmentConfig.ts";
import { type Interactions, interfaceUses, readInteractions, writeInteractions } from "./interactions.ts";
import { type Interface, interfaceName, readInterface } from "./interfaces.ts";
import { withDevices, withMissingDevices } from "./devices.ts";
import { fittedCommands } from "./fitCommands.ts";
import type { Lock } from "./lock.ts";
import { withLock } from "./panelOptions.ts";
import { asArray, asObject, isObject, type JsonObject } from "./json.ts";
import { type Material, readMaterials, writeMaterials } from "./materials.ts";
import { isRefused, refusal, type Refusal } from "./readLayout.ts";
import { readWholeLayout, writeLayout } from "./wholeLayout.ts";
import { type Project, retarget, withCopiedCommands, withPages } from "./project.ts";

const form = "control project";
export const transferVersion = 1;

export interface Transfer {
  /** "project" replaces everything, "page" is added to the existing pages. */
  readonly scope: "project" | "page";
  readonly project: Project;
  /** The interfaces that the commands name, so that another server can be given the same. */
  readonly interfaces: readonly Interface[];
  /** What their devices are asked and what the answers mean, by the names of the interfaces. */
  readonly devices: ReadonlyMap<string, JsonObject>;
}

/**
 * The text of the file.
 * @param page       only what this page uses
 * @param equipment  the document of what devices are asked
 */
export function writeTransfer(
  project: Project,
  interfaces: readonly Interface[],
  page?: Page,
  equipment?: unknown,
): string {
  const content = withLockOf(page ? onlyPage(project, page, interfaces) : project, undefined);
  const written = page ? usedInterfaces(content, interfaces, equipment) : interfaces;
  return JSON.stringify(
    {
      form,
      version: transferVersion,
      scope: page ? "page" : "project",
      layout: writeLayout(content.layout),
      interactions: writeInteractions(
        content.interactions,
        content.layout.pages.flatMap((one) => one.components),
      ),
      materials: writeMaterials(content.materials),
      interfaces: written.map((one) => writeInterface(one, deviceIn(equipment, one.nodeId))),
    },
    null,
    1,
  );
}

/** Each server has a lock of its own: its PIN is not known to whoever gets the file. */
function withLockOf(project: Project, lock: Lock | undefined): Project {
  const { layout } = project;
  return { ...project, layout: { ...layout, panel: withLock(layout.panel, lock) } };
}

function writeInterface(one: Interface, device: JsonObject | undefined): object {
  return { nodeId: one.nodeId, controlType: one.controlType, [one.controlType]: one.info, ...(device && { device }) };
}

/** The interfaces that get commands, and those whose devices say what is shown. */
function usedInterfaces({ interactions, layout }: Project, interfaces: readonly Interface[], equipment: unknown) {
  const uses = interfaceUses(interactions);
  const shown = new Set(layout.pages.flatMap((page) => page.components.flatMap((one) => [...valueNames(one)])));
  const isShown = (nodeId: number) => namesInDevice(deviceIn(equipment, nodeId) ?? {}).some((name) => shown.has(name));
  return interfaces.filter(({ nodeId }) => uses.has(nodeId) || isShown(nodeId));
}

function onlyPage(project: Project, page: Page, interfaces: readonly Interface[]): Project {
  const used = new Set([page.material, ...page.components.flatMap(looksOf).map((look) => look.material)]);
  const interactions: Record<number, Interactions[number]> = {};
  for (const { id, type } of page.components) {
    const commands = project.interactions[id];
    if (commands && isActive(type)) interactions[id] = commands;
  }
  const uses = interfaceUses(interactions);
  const names = new Set(interfaces.filter((one) => uses.has(one.nodeId)).map(interfaceName));
  const devices = (project.layout.devices ?? []).filter((one) => names.has(one.interfaceName));
  const layout = withDevices({ ...emptyLayout, pages: [page] }, devices);
  return { layout, interactions, materials: project.materials.filter((one) => used.has(one.id)) };
}

/** The content of a file, or why it can't be used. */
export function readTransfer(text: string): Transfer | Refusal {
  let value: unknown;
  try {
    value = JSON.parse(text);
  } catch {
    return { refused: "foreign" };
  }
  const refused = refusal(value, form, transferVersion);
  if (refused) return refused;
  const document = asObject(value);
  const layout = readWholeLayout(document["layout"]);
  if (isRefused(layout)) return layout;
  const materials = readMaterials(document["materials"]);
  if (isRefused(materials)) return materials;
  const devices = new Map<string, JsonObject>();
  const interfaces = asArray(document["interfaces"]).flatMap((value) => {
    const one = readInterface(value);
    const device = asObject(value)["device"];
    if (one && isObject(device)) devices.set(interfaceName(one), device);
    return one ?? [];
  });
  return {
    scope: document["scope"] === "page" ? "page" : "project",
    project: { layout, materials, interactions: readInteractions(document["interactions"]) },
    interfaces,
    devices,
  };
}

/** What an import needs here: the interfaces that this server lacks, by name. */
export function missingInterfaces(transfer: Transfer, here: readonly Interface[]): Interface[] {
  const names = new Set(here.map(interfaceName));
  return transfer.interfaces.filter((one) => !names.has(interfaceName(one)));
}

/** The interfaces here whose devices are asked as the file says. A page leaves alone what is there already. */
export function importedDevices(transfer: Transfer, equipment: unknown, here: readonly Interface[]): Interface[] {
  return here.filter(
    (one) =>
      transfer.devices.has(interfaceName(one)) && (transfer.scope === "project" || !deviceIn(equipment, one.nodeId)),
  );
}

/** The document of what devices are asked after an import. */
export function withImportedDevices(transfer: Transfer, equipment: unknown, here: readonly Interface[]): unknown {
  return importedDevices(transfer, equipment, here).reduce(
    (document, one) => withDevice(document, one.nodeId, transfer.devices.get(interfaceName(one))),
    equipment,
  );
}

/**
 * The project after an import. Commands are assigned to this server's interfaces of the same names. Blocks come
 * with a whole project and replace the ones here; their commands are assigned when a block is put on a page.
 */
export function imported(project: Project, transfer: Transfer, here: readonly Interface[]): Project {
  const namesThere = new Map(transfer.interfaces.map((one) => [one.nodeId, interfaceName(one)]));
  const interactions = fittedCommands(
    transfer.project.interactions,
    here,
    (command) => namesThere.get(command.portIndex) ?? command.interfaceName,
  );
  const content = { ...transfer.project, interactions };
  return transfer.scope === "project"
    ? withLockOf(content, project.layout.panel.lock)
    : withAddedPages(project, content);
}

/** Adds the pages under new ids, and materials under their own unless they exist already. */
function withAddedPages(project: Project, content: Project): Project {
  const pageIds = new Map<string, string>();
  const added: Page[] = [];
  let result: Project = project;
  for (const page of content.layout.pages) {
    const copy = copyPage(page, page.name);
    pageIds.set(page.id, copy.page.id);
    added.push(copy.page);
    result = withCopiedCommands(result, content.interactions, copy.ids);
  }
  const known = new Set(project.materials.map((one: Material) => one.id));
  const materials = [...project.materials, ...content.materials.filter((one) => !known.has(one.id))];
  const layout = withMissingDevices(result.layout, content.layout);
  return withPages({ ...result, layout, materials }, [
    ...project.layout.pages,
    ...added.map((page) => retarget(page, pageIds)),
  ]);
}
