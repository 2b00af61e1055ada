import type { Interface } from "../../model/interfaces.ts";
import type { Page } from "../../model/layout.ts";
import type { Project } from "../../model/project.ts";
import { writeTransfer } from "../../model/transfer.ts";

/** Hands everything, or one page, to the browser as a file. */
export function download(project: Project, interfaces: readonly Interface[], page?: Page): void {
  const day = new Date().toISOString().slice(0, 10);
  const name = (page?.name ?? "control-pages").replace(/[\\/:*?"<>|\s]+/g, "-");
  const url = URL.createObjectURL(new Blob([writeTransfer(project, interfaces, page)], { type: "application/json" }));
  const link = document.createElement("a");
  link.href = url;
  link.download = `${name}-${day}.json`;
  link.click();
  setTimeout(() => URL.revokeObjectURL(url), 60_000);
}
