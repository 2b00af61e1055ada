/** The three documents of a project: read as one, written as one. */
import { server } from "../../api/server.ts";
import { readInteractions } from "../../model/interactions.ts";
import { sameJson } from "../../model/json.ts";
import { type Material, readMaterials } from "../../model/materials.ts";
import { type Project, writeProject } from "../../model/project.ts";
import { isRefused, readLayout, type Refusal } from "../../model/readLayout.ts";

export async function readStored(): Promise<Project | Refusal> {
  const [layoutText, materialsText, interactions] = await Promise.all([
    server.layout(), server.materials(), server.interactions(),
  ]);
  const layout = readLayout(layoutText);
  if (isRefused(layout)) return layout;
  const materials = readMaterials(materialsText);
  if (isRefused(materials)) return materials;
  return { layout, materials: materials as readonly Material[], interactions: readInteractions(interactions) };
}

/**
 * Stores what differs from `stored`. The layout comes last: a panel that reads in between never meets a page whose
 * pictures or commands are not there yet. Its time of saving tells panels that any of the three is another one.
 */
export async function writeStored(project: Project, stored: Project): Promise<void> {
  const mine = writeProject(project);
  const theirs = writeProject(stored);
  if (!sameJson(mine.materials, theirs.materials)) await server.storeMaterials(mine.materials);
  await server.storeInteractions(mine.interactions);
  await server.storeLayout({ ...mine.layout, saved: Date.now() });
}
