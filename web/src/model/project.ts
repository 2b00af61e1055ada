/** Everything that the author edits and saves together. Never changed in place; every change makes a new one. */
import { allComponents, type Component, emptyLayout, type Layout, type Page } from "./layout.ts";
import { type Command, type ComponentCommands, type Interactions, writeInteractions } from "./interactions.ts";
import { type Material, writeMaterials } from "./materials.ts";
import { sameJson } from "./json.ts";
import { withoutStrayPlaces } from "./phoneLayout.ts";
import { isRefused } from "./readLayout.ts";
import { readWholeLayout, writeLayout } from "./wholeLayout.ts";

export interface Project {
  readonly layout: Layout;
  readonly interactions: Interactions;
  readonly materials: readonly Material[];
}

export const emptyProject: Project = { layout: emptyLayout, interactions: {}, materials: [] };

/** The three documents as they are stored. */
export function writeProject(project: Project): { layout: object; interactions: object; materials: object } {
  return {
    layout: writeLayout(project.layout),
    interactions: writeInteractions(project.interactions, allComponents(project.layout)),
    materials: writeMaterials(project.materials),
  };
}

/** The project as this version reads it, when another version may have kept it: with the fields that it knows. */
export function asRead(project: Project): Project {
  const layout = readWholeLayout(writeLayout(project.layout));
  return isRefused(layout) ? project : { ...project, layout };
}

/** Whether two projects would be stored as equal documents. */
export function sameProject(one: Project, other: Project): boolean {
  if (one === other) return true;
  return (
    sameMaterials(one.materials, other.materials) &&
    sameJson(one.layout, other.layout) &&
    sameJson(writeProject(one).interactions, writeProject(other).interactions)
  );
}

function sameMaterials(one: readonly Material[], other: readonly Material[]): boolean {
  return one === other || sameJson(one, other);
}

export function withPage(project: Project, pageId: string, change: (page: Page) => Page): Project {
  const pages = project.layout.pages.map((page) => (page.id === pageId ? withoutStrayPlaces(change(page)) : page));
  return { ...project, layout: { ...project.layout, pages } };
}

export function withPages(project: Project, pages: readonly Page[]): Project {
  return { ...project, layout: { ...project.layout, pages } };
}

/** The page with some of its components replaced by the results of `change`. */
export function withComponents(page: Page, ids: ReadonlySet<number>, change: (one: Component) => Component): Page {
  return { ...page, components: page.components.map((one) => (ids.has(one.id) ? change(one) : one)) };
}

export function withCommands(project: Project, componentId: number, commands: ComponentCommands): Project {
  return { ...project, interactions: { ...project.interactions, [componentId]: commands } };
}

/** The project with the commands of copied components copied too. */
export function withCopiedCommands(project: Project, from: Interactions, ids: ReadonlyMap<number, number>): Project {
  const interactions: Record<number, ComponentCommands> = { ...project.interactions };
  for (const [old, fresh] of ids) {
    const commands = from[old];
    if (commands) interactions[fresh] = commands;
  }
  return { ...project, interactions };
}

/** The page with its links and its questions' pages changed according to the table; what the table lacks stays. */
export function retarget(page: Page, pages: ReadonlyMap<string, string>): Page {
  const components = page.components.map((one) => {
    if ("confirmPage" in one) {
      const confirmPage = pages.get(one.confirmPage);
      return confirmPage ? { ...one, confirmPage } : one;
    }
    if (one.type !== "link") return one;
    const target = pages.get(one.target);
    return target ? { ...one, target } : one;
  });
  return { ...page, components };
}

export function commandsOf(project: Project, componentId: number, trigger: string): readonly Command[] {
  return project.interactions[componentId]?.triggers[trigger] ?? [];
}
