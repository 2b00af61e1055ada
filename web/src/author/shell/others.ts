/** What somebody else has saved, in words. */
import { ta } from "../../i18n/author.ts";
import { allComponents } from "../../model/layout.ts";
import { sameJson } from "../../model/json.ts";
import { changedPages } from "../../model/merge.ts";
import type { Project } from "../../model/project.ts";
import type { Clash } from "../../model/threeWay.ts";
import type { ProjectStore } from "../project/store.svelte.ts";
import { nameOfComponent } from "./componentNames.ts";

/** What they have changed, and what becomes of it at the next save. */
export function othersText({ base, project, clashes }: ProjectStore, theirs: Project): string {
  const lost = base.layout.pages.filter((page) => !theirs.layout.pages.some((one) => one.id === page.id));
  const names = [...changedPages(theirs, base), ...lost].map((page) => page.name).join(", ");
  const titles = clashes.map((one) => clashTitle(one, [project, theirs])).join(", ");
  return [
    ta("othersSaved", names || ta("othersSavedElse")),
    clashes.length ? ta("othersClash", titles) : ta("othersMerge"),
  ].join("\n");
}

/** The name of what both have changed, as the first of the projects has it that has it at all. */
export function clashTitle({ kind, pageId, componentId, materialId }: Clash, projects: readonly Project[]): string {
  const find = <Found>(look: (project: Project) => Found | undefined) => {
    for (const project of projects) {
      const found = look(project);
      if (found !== undefined) return found;
    }
    return undefined;
  };
  if (kind === "project") return ta("settingsOfProject");
  if (kind === "material") return find(({ materials }) => materials.find((one) => one.id === materialId))?.name ?? "";
  const page = find(({ layout }) => layout.pages.find((one) => one.id === pageId))?.name ?? "";
  if (kind === "page") return page;
  const component = find(({ layout }) => allComponents(layout).find((one) => one.id === componentId));
  return component ? `${page} › ${nameOfComponent(component)}` : page;
}

/** In what two versions of a component differ, in words; empty for anything else. */
export function differences({ componentId }: Clash, mine: Project, theirs: Project): string {
  const [one, other] = [mine, theirs].map(({ layout }) => allComponents(layout).find(({ id }) => id === componentId));
  if (!one || !other) return "";
  const { x, y, width, height } = other;
  const words = [
    !sameJson({ ...one, x, y, width, height }, one) && ta("differsPlace"),
    !sameJson({ ...one, x, y, width, height }, other) && ta("differsLook"),
    !sameJson(mine.interactions[componentId], theirs.interactions[componentId]) && ta("differsCommands"),
  ];
  return words.filter(Boolean).join(", ");
}
