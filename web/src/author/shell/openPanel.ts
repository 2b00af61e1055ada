import { ta } from "../../i18n/author.ts";
import type { Application } from "../application.ts";
import { saveProject } from "./save.ts";

/** The address of the panel: on the page that is being edited, otherwise on the first one. */
export function panelAddress({ route }: Application): string {
  return route.screen === "edit" && route.id ? `#/panel/${route.id}` : "#/panel";
}

/** Asks before the panel is opened on a page that isn't stored, since the panel would show another one. */
export async function openPanel(app: Application, event: Event): Promise<void> {
  const { store, notices, route } = app;
  const isUnder = ({ id }: { id: string }) => route.screen === "edit" && id === route.id;
  const page = store.project.layout.pages.find(isUnder);
  if (!page || store.base.layout.pages.some(isUnder)) return;
  event.preventDefault();
  const address = panelAddress(app);
  const question = ta("panelLacksPage", page.name);
  if (!(await notices.ask(ta("openPanel"), question, ta("saveAndOpen"))) || !(await saveProject(app))) return;
  // A slow save outlasts the time for which the browser lets a click open a tab.
  const show = () => window.open(address, "_blank");
  if (!show()) notices.tell("good", ta("projectSaved"), { label: ta("openPanel"), run: show });
}
