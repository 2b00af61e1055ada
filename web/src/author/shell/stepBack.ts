import { ta } from "../../i18n/author.ts";
import { type Change, changesBetween, isOnPage } from "../../model/changes.ts";
import type { Application } from "../application.ts";

const mostNamed = 3;

/** Undoes or repeats a step. Says what has changed unless the author sees it: on the page that is being edited. */
export function stepBack({ store, notices, route }: Application, way: "undo" | "redo"): void {
  const before = store.project;
  store[way]();
  if (store.project === before) return;
  const changes = changesBetween(before, store.project);
  if (route.screen === "edit" && isOnPage(changes, route.id)) return;
  notices.tell("plain", ta(way === "undo" ? "undone" : "redone", listed(changes)));
}

function listed(changes: readonly Change[]): string {
  const named = changes.slice(0, mostNamed).map(nameOf);
  const more = changes.length - named.length;
  const all = more ? [...named, ta("changedMore", more)] : named;
  return all.join(ta("listComma")) || ta("changed_order");
}

function nameOf(change: Change): string {
  return "page" in change ? ta(`changed_${change.kind}`, change.page.name) : ta(`changed_${change.kind}`);
}
