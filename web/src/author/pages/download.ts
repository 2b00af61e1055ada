import type { Interface } from "../../model/interfaces.ts";
import type { Page } from "../../model/layout.ts";
import type { Project } from "../../model/project.ts";
import { writeTransfer } from "../../model/transfer.ts";

/** Hands everything, or one page, to the browser as a file (`writeTransfer`). */
export function download(
  project: Project,
  interfaces: readonly Interface[],
  page: Page | undefined,
  equipment: unknown,
): void {
  const text = writeTransfer(project, interfaces, page, equipment);
  saveFile(text, page?.name ?? "control-pages", "json", "application/json");
}

/** Hands a text to the browser as a file with the name, today's date and this ending. */
export function saveFile(text: string, title: string, ending: string, type: string): void {
  const day = new Date().toISOString().slice(0, 10);
  const name = title.replace(/[\\/:*?"<>|\s]+/g, "-");
  const url = URL.createObjectURL(new Blob([text], { type }));
  const link = document.createElement("a");
  link.href = url;
  link.download = `${name}-${day}.${ending}`;
  link.click();
  setTimeout(() => URL.revokeObjectURL(url), 60_000);
}
