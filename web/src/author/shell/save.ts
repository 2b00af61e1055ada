import { ta } from "../../i18n/author.ts";
import type { Application } from "../application.ts";

/** Stores the project and says so; a conflict shows its own dialog. True when it is stored. */
export async function saveProject({ store, notices }: Application): Promise<boolean> {
  if (store.status !== "ready" || store.saving) return false;
  if (!store.isDirty) return true;
  let saved = false;
  await notices.attempt(async () => {
    const result = await store.save();
    saved = result !== "conflict";
    if (saved) notices.tell("good", ta(result === "merged" ? "savedMerged" : "projectSaved"));
  });
  return saved;
}
