/** For two authors who have changed the same documents: who changed what, and my pages kept as copies. */
import { allComponents, copyPage, type Page } from "./layout.ts";
import { type ComponentCommands, mapCommands, writeInteractions } from "./interactions.ts";
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
 * What somebody else has stored, with the commands as `known` has them wherever they are stored in the same way. Those
 * that no trigger of a component fires are not in the document, nor are those of deleted interfaces.
 */
export function withKnownCommands(
  stored: Project,
  known: readonly Project[],
  interfaceIds: ReadonlySet<number>,
): Project {
  const interactions: Record<number, ComponentCommands> = { ...stored.interactions };
  const bare = [stored, ...known].map((one) => withoutLostCommands(one, interfaceIds).interactions);
  for (const component of allComponents(stored.layout)) {
    const [now, ...forms] = bare.map((one) => writeInteractions(one, [component]));
    const commands = known[forms.findIndex((one) => sameJson(one, now))]?.interactions[component.id];
    if (commands) interactions[component.id] = commands;
  }
  return { ...stored, interactions };
}

/**
 * The project with copies of some pages of mine at its end. Links between these copies lead to the copies.
 * @param nameOf  the copy's name
 */
export function withCopies(
  project: Project,
  mine: Project,
  pageIds: ReadonlySet<string>,
  nameOf: (page: Page) => string,
): Project {
  const copies: Page[] = [];
  const targets = new Map<string, string>();
  let result = project;
  for (const page of mine.layout.pages.filter((one) => pageIds.has(one.id))) {
    const copy = copyPage(page, nameOf(page));
    targets.set(page.id, copy.page.id);
    copies.push(copy.page);
    result = withCopiedCommands(result, mine.interactions, copy.ids);
  }
  return withPages(result, [...result.layout.pages, ...copies.map((page) => retarget(page, targets))]);
}
