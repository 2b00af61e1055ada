import { ta } from "../../i18n/author.ts";
import type { Project } from "../../model/project.ts";
import type { Application } from "../application.ts";

/** Makes a large change one step, and says what it was beside a button that takes it back while it is the last one. */
export function changeAndTell({ store, notices }: Application, next: Project, text: string): void {
  store.endStep();
  store.change(next);
  store.endStep();
  notices.tell("good", text, {
    label: ta("undo"),
    run: () => store.undo(),
    holds: () => store.isDirty && store.project === next,
  });
}
