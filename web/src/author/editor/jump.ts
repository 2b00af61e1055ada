import type { Problem } from "../../model/problems.ts";
import type { Route } from "../shell/route.svelte.ts";
import type { Editor } from "./editor.svelte.ts";

/** Leads to what a problem is about: on this page at once, on another after that one was opened. */
export function jumpTo(editor: Editor, problem: Problem, route: Route): void {
  if (problem.pageId !== editor.pageId) {
    route.go("edit", problem.pageId);
    route.awaited = problem.componentId;
    return;
  }
  show(editor, problem.componentId);
}

/** Selects what a jump from another page was about. */
export function arrive(editor: Editor, route: Route): void {
  if (route.awaited) show(editor, route.awaited);
  route.awaited = 0;
}

function show(editor: Editor, componentId: number): void {
  const component = editor.components.find((one) => one.id === componentId);
  if (!component) return editor.select([]);
  editor.select([component.id]);
  const x = editor.pan.x + (component.x + component.width / 2) * editor.zoom;
  const y = editor.pan.y + (component.y + component.height / 2) * editor.zoom;
  const isSeen = x > 0 && y > 0 && x < editor.room.width && y < editor.room.height;
  if (!isSeen) editor.panBy(editor.room.width / 2 - x, editor.room.height / 2 - y);
}
