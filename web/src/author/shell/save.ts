import { ta } from "../../i18n/author.ts";
import type { Application } from "../application.ts";

/** Stores the project and says so; a conflict shows its own dialog. True when it is stored. */
export async function saveProject({ store, notices }: Application): Promise<boolean> {
  if (store.status !== "ready" || store.saving) return false;
  if (!store.isDirty) return true;
  let saved = false;
  await notices.attempt(async () => {
    saved = (await store.save()) === "saved";
    if (saved) notices.tell("good", ta("projectSaved"));
  });
  return saved;
}
