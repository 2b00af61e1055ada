import type { Problem, ProblemKind } from "../../model/problems.ts";
import type { Lead, Route } from "../shell/route.svelte.ts";
import type { Editor } from "./editor.svelte.ts";

const ofCommands: readonly ProblemKind[] = ["noCommand", "lostInterface", "badContent"];

/** Leads to what a problem is about: on this page at once, on another after that one was opened. */
export function jumpTo(editor: Editor, { kind, pageId, componentId, isOnPhone }: Problem, route: Route): void {
  const lead: Lead = { componentId, isOnPhone, tab: ofCommands.includes(kind) ? "commands" : "look" };
  if (pageId === editor.pageId) return show(editor, lead);
  route.go("edit", pageId);
  route.awaited = lead;
}

/** Selects and shows what a jump from elsewhere was about. */
export function arrive(editor: Editor, route: Route): void {
  if (route.awaited) show(editor, route.awaited);
  route.awaited = undefined;
}

function show(editor: Editor, lead: Lead): void {
  if (lead.isOnPhone !== undefined && lead.isOnPhone !== editor.isOnPhone) {
    editor.wantsPhone = lead.isOnPhone;
    editor.fit();
  }
  const component = editor.components.find((one) => one.id === lead.componentId);
  if (lead.tab) editor.asked = lead;
  if (!component) return editor.select([]);
  editor.select([component.id]);
  const x = editor.pan.x + (component.x + component.width / 2) * editor.zoom;
  const y = editor.pan.y + (component.y + component.height / 2) * editor.zoom;
  const isSeen = x > 0 && y > 0 && x < editor.room.width && y < editor.room.height;
  if (!isSeen) editor.panBy(editor.room.width / 2 - x, editor.room.height / 2 - y);
}
