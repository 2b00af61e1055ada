/** The three documents of a project: read as one, written as one. */
import { codes, type Server, ServerError, type Stored } from "../../api/server.ts";
import { type Command, readInteractions, writeCommand } from "../../model/interactions.ts";
import { asArray, asObject, isObject, sameJson } from "../../model/json.ts";
import { readMaterials } from "../../model/materials.ts";
import { emptyProject, type Project, writeProject } from "../../model/project.ts";
import { isRefused, type Refusal } from "../../model/readLayout.ts";
import { readWholeLayout } from "../../model/wholeLayout.ts";

/** The calls that read and write the documents. */
export type DocumentServer = Pick<
  Server,
  "layout" | "materials" | "interactions" | "storeLayout" | "storeMaterials" | "storeInteractions"
>;

/** What is stored at one moment. */
export interface Snapshot {
  readonly project: Project | Refusal;
  readonly layout: Stored;
  readonly materials: Stored;
  readonly interactions: Stored;
}

export async function readStored(server: DocumentServer): Promise<Snapshot> {
  const [layout, materials, interactions] = await Promise.all([
    server.layout(),
    server.materials(),
    server.interactions(),
  ]);
  return { project: readProject(layout.data, materials.data, interactions.data), layout, materials, interactions };
}

/** The project of three documents, or why they can't be used. */
export function readProject(
  layoutDocument: unknown,
  materialsDocument: unknown,
  interactions: unknown,
): Project | Refusal {
  const layout = readWholeLayout(layoutDocument);
  if (isRefused(layout)) return layout;
  const materials = readMaterials(materialsDocument);
  if (isRefused(materials)) return materials;
  return { layout, materials, interactions: readInteractions(interactions) };
}

/** Whether a write was refused because somebody else has stored something in between. */
function isOvertaken(error: unknown): boolean {
  return error instanceof ServerError && error.code === codes.changed;
}

/**
 * Stores what differs from the snapshot, as long as nobody else has stored anything since the snapshot was made. The
 * layout comes last: a panel that reads in between never meets a page whose pictures or commands are missing. The
 * layout's time of saving shows panels that any of the three documents has changed, and lets only one of two authors
 * through who save at the same time.
 * @param time  of saving, in ms since 1970
 * @returns false when somebody else was faster; everything written until then is taken back
 */
export async function writeStored(
  server: DocumentServer,
  project: Project,
  on: Snapshot,
  time: number,
): Promise<boolean> {
  const mine = writeProject(project);
  const theirs = writeProject(isRefused(on.project) ? emptyProject : on.project);
  const writes = [
    { store: server.storeInteractions, data: mine.interactions as unknown, before: on.interactions },
    { store: server.storeLayout, data: { ...mine.layout, saved: time } as unknown, before: on.layout },
  ];
  if (!sameJson(mine.materials, theirs.materials)) {
    writes.unshift({ store: server.storeMaterials, data: mine.materials, before: on.materials });
  }
  const takeBack: (() => Promise<unknown>)[] = [];
  for (const { store, data, before } of writes) {
    try {
      const tag = await store(data, before.tag);
      takeBack.unshift(() => store(before.data ?? null, tag));
    } catch (error) {
      if (!isOvertaken(error)) throw error;
      for (const restore of takeBack) {
        await restore().catch((failure: unknown) => {
          if (!isOvertaken(failure)) throw failure; // else somebody has stored over it already
        });
      }
      return false;
    }
  }
  return true;
}

/**
 * Stores the commands of one trigger, and nothing else of the project.
 * @returns false when somebody else has stored commands at the same time
 */
export async function storeCommands(
  server: DocumentServer,
  componentId: number,
  trigger: string,
  commands: readonly Command[],
): Promise<boolean> {
  const stored = await server.interactions();
  const document = asObject(stored.data);
  const info = asObject(document["componentInteractionInfo"]);
  const components = asArray(info["componentArr"]).filter(isObject);
  const component = components.find((one) => one["componentId"] === componentId) ?? { componentId, interactionArr: [] };
  const others = asArray(component["interactionArr"]).filter((one) => asObject(one)["triggerType"] !== trigger);
  const interaction = { triggerType: trigger, commandArr: commands.map(writeCommand) };
  const changed = { ...component, interactionArr: [...others, interaction] };
  const componentArr = [...components.filter((one) => one["componentId"] !== componentId), changed];
  try {
    await server.storeInteractions({ ...document, componentInteractionInfo: { ...info, componentArr } }, stored.tag);
    return true;
  } catch (error) {
    if (!isOvertaken(error)) throw error;
    return false;
  }
}
