/** For two authors who have changed the same documents: who changed what, and my changes kept as a copy. */
import { copyPage, type Page } from "./layout.ts";
import { withMissingDevices } from "./devices.ts";
import { mapCommands } from "./interactions.ts";
import { sameJson } from "./json.ts";
import { type Project, retarget, withCopiedCommands, withPages, writeProject } from "./project.ts";

/**
 * Whether somebody else has stored something since `base` was read. A state that equals `mine` is not such a change: an
 * earlier save of mine may have been cut short. Nor are missing commands of deleted interfaces: the server itself
 * removes them when an interface is deleted.
 */
export function isChanged(base: Project, stored: Project, mine: Project, interfaceIds: ReadonlySet<number>): boolean {
  const [from, now, own] = [base, stored, mine].map((one) => writeProject(withoutLostCommands(one, interfaceIds)));
  const documents = ["layout", "materials", "interactions"] as const;
  return documents.some((name) => !sameJson(now![name], from![name]) && !sameJson(now![name], own![name]));
}

export function withoutLostCommands(project: Project, interfaceIds: ReadonlySet<number>): Project {
  const keep = mapCommands(project.interactions, (one) => (interfaceIds.has(one.portIndex) ? one : undefined));
  return { ...project, interactions: keep };
}

/** Whether a page, with the commands of its components, is the same in both projects. */
function isSamePage(page: Page, mine: Project, other: Project): boolean {
  const counterpart = other.layout.pages.find((one) => one.id === page.id);
  if (!counterpart || !sameJson(page, counterpart)) return false;
  const commandsOf = (project: Project) =>
    page.components.map((one) => project.interactions[one.id] ?? { triggers: {} });
  return sameJson(commandsOf(mine), commandsOf(other));
}

/** The pages of a project that differ from another one's, or that the other one lacks. */
export function changedPages(project: Project, from: Project): Page[] {
  return project.layout.pages.filter((page) => !isSamePage(page, project, from));
}

/**
 * Their project, with copies of the pages that I have changed since `base`. Links between these copies lead to the
 * copies; materials and lists of devices that only I have are added.
 * @param nameOf  the copy's name
 */
export function mineAsCopy(base: Project, mine: Project, theirs: Project, nameOf: (page: Page) => string): Project {
  const copies: Page[] = [];
  const pageIds = new Map<string, string>();
  let result: Project = theirs;
  for (const page of changedPages(mine, base)) {
    const copy = copyPage(page, nameOf(page));
    pageIds.set(page.id, copy.page.id);
    copies.push(copy.page);
    result = withCopiedCommands(result, mine.interactions, copy.ids);
  }
  const known = new Set(theirs.materials.map((one) => one.id));
  const materials = [...theirs.materials, ...mine.materials.filter((one) => !known.has(one.id))];
  const layout = withMissingDevices(result.layout, mine.layout);
  return withPages({ ...result, layout, materials }, [
    ...theirs.layout.pages,
    ...copies.map((page) => retarget(page, pageIds)),
  ]);
}
