/** What differs between two projects, in words that an author knows: pages, their commands, materials, options. */
import { sameJson } from "./json.ts";
import type { Page } from "./layout.ts";
import type { Project } from "./project.ts";

export type Change =
  | { readonly kind: "added" | "removed" | "page" | "commands"; readonly page: Page }
  | { readonly kind: "materials" | "devices" | "blocks" | "options" };

/** Each page once: with the commands alone when nothing else of it differs. */
export function changesBetween(before: Project, after: Project): Change[] {
  const [old, fresh] = [pagesOf(before), pagesOf(after)];
  const changes: Change[] = [];
  for (const page of after.layout.pages) {
    const was = old.get(page.id);
    if (!was) changes.push({ kind: "added", page });
    else if (was !== page && !sameJson(was, page)) changes.push({ kind: "page", page });
    else if (page.components.some(({ id }) => differ(before.interactions[id], after.interactions[id]))) {
      changes.push({ kind: "commands", page });
    }
  }
  for (const page of before.layout.pages) if (!fresh.has(page.id)) changes.push({ kind: "removed", page });
  if (differ(before.materials, after.materials)) changes.push({ kind: "materials" });
  if (differ(before.layout.devices, after.layout.devices)) changes.push({ kind: "devices" });
  if (differ(before.layout.blocks, after.layout.blocks)) changes.push({ kind: "blocks" });
  if (differ(optionsOf(before), optionsOf(after))) changes.push({ kind: "options" });
  return changes;
}

/** Whether all of it is seen by an author who edits that page. */
export function isOnPage(changes: readonly Change[], pageId: string): boolean {
  return changes.every((one) => "page" in one && one.page.id === pageId);
}

const pagesOf = ({ layout }: Project) => new Map(layout.pages.map((page) => [page.id, page]));

/** What the layout says of all pages: which are shared by both, in which order, where a panel starts. */
function optionsOf({ layout: { pages: _, devices: __, blocks: ___, ...rest } }: Project): object {
  return rest;
}

function differ(one: unknown, other: unknown): boolean {
  return one !== other && !sameJson(one, other);
}
