/** What an author does with the layout for phones of the edited page; each is a step that can be undone. */
import { sameJson } from "../../model/json.ts";
import type { Page } from "../../model/layout.ts";
import { withHidden, withoutPhone } from "../../model/phoneEdit.ts";
import { withPage } from "../../model/project.ts";
import type { Editor } from "./editor.svelte.ts";

function change(editor: Editor, change: (page: Page) => Page): void {
  editor.store.endStep();
  editor.store.change(withPage(editor.store.project, editor.pageId, change));
  editor.store.endStep();
}

/** Shows one of the two layouts. Without a layout for phones, one is proposed. */
export async function showLayout(editor: Editor, isOnPhone: boolean): Promise<void> {
  if (isOnPhone && !editor.bothLayouts?.phone) await arrange(editor);
  editor.wantsPhone = isOnPhone;
  editor.select([]);
}

/** Gives the page the layout for phones that is proposed for it. */
export async function arrange(editor: Editor): Promise<void> {
  const { arrangedForPhone } = await import("../../model/phoneArrange.ts");
  change(editor, (page) => {
    const phone = arrangedForPhone(page);
    return sameJson(phone, page.phone) ? page : { ...page, phone };
  });
}

export function removeLayout(editor: Editor): void {
  change(editor, withoutPhone);
  void showLayout(editor, false);
}

/** Hides components on phones, or shows them there again. */
export function setHidden(editor: Editor, ids: Iterable<number>, isHidden: boolean): void {
  const wanted = new Set(ids);
  change(editor, (page) => withHidden(page, wanted, isHidden));
  editor.select(isHidden ? [] : wanted);
}
