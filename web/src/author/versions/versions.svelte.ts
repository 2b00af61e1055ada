/** The list of versions, what they hold, and what an author does with them. */
import { ServerError } from "../../api/server.ts";
import { ta } from "../../i18n/author.ts";
import { type Interface, readInterfaces } from "../../model/interfaces.ts";
import { asArray, asObject, asText } from "../../model/json.ts";
import type { Project } from "../../model/project.ts";
import { isRefused } from "../../model/readLayout.ts";
import { readVersions, type Version } from "../../model/versions.ts";
import type { Application } from "../application.ts";
import { readProject } from "../project/documents.ts";

export interface VersionContent {
  readonly project: Project;
  readonly interfaces: readonly Interface[];
}

export class Versions {
  /** Nothing until it was read. */
  list = $state.raw<readonly Version[] | undefined>();
  /** Why the list could not be read; empty: it could. */
  fault = $state("");
  /** Something is under way that another action would disturb. */
  isBusy = $state(false);
  #contents = new Map<string, Promise<VersionContent | undefined>>();

  constructor(readonly app: Pick<Application, "server" | "store" | "notices">) {}

  async read(): Promise<void> {
    try {
      this.list = readVersions(await this.app.server.versions());
      this.fault = "";
    } catch (error) {
      this.fault = this.app.notices.sentenceOf(error);
    }
  }

  /** What a version holds, read once; nothing when it can't be shown. */
  content(version: Version): Promise<VersionContent | undefined> {
    const known = this.#contents.get(version.id);
    if (known) return known;
    const content = this.#readContent(version).catch(() => {
      this.#contents.delete(version.id); // another look tries again
      return undefined;
    });
    this.#contents.set(version.id, content);
    return content;
  }

  async #readContent({ id, documents }: Version): Promise<VersionContent | undefined> {
    const read = (name: string) =>
      documents.includes(name) ? this.app.server.versionDocument(id, name) : Promise.resolve(null);
    const [layout, materials, interactions, interfaces] = await Promise.all([
      read("layout.json"),
      read("materials.json"),
      read("componentConfig.json"),
      read("interFace.json"),
    ]);
    const project = readProject(layout, materials, interactions);
    return isRefused(project) ? undefined : { project, interfaces: readInterfaces(interfaces) };
  }

  /** @returns whether the server has taken the name */
  async rename({ id }: Version, name: string): Promise<boolean> {
    const isDone = await this.#attempt(() => this.app.server.nameVersion(id, name));
    if (isDone) this.list = this.list?.map((one) => (one.id === id ? { ...one, name: name.trim() } : one));
    return isDone;
  }

  /** Keeps what is stored now. @returns the id of the version; nothing when it failed */
  async keep(): Promise<string | undefined> {
    if (!this.#isSaved()) return undefined;
    let id = "";
    const isDone = await this.#attempt(
      async () => (id = asText(asObject(await this.app.server.keepVersion(""))["id"])),
    );
    if (!isDone) return undefined;
    await this.read();
    return id;
  }

  /** Asks, restores, and offers to undo that. */
  async restore(version: Version): Promise<void> {
    if (!this.#isSaved()) return;
    const { notices } = this.app;
    const title = ta("restoreQuestion", versionTitle(version));
    if (await notices.ask(title, ta("restoreText"), ta("restore"))) await this.#restore(version.id, "restored");
  }

  async #restore(id: string, told: "restored" | "restoreUndone"): Promise<void> {
    if (!this.#isSaved()) return;
    const { server, store, notices } = this.app;
    await this.#attempt(async () => {
      const reply = asObject(await server.restoreVersion(id));
      await (store.status === "ready" ? store.refresh() : store.load());
      await this.read();
      const undo = { label: ta("undo"), run: () => void this.#restore(asText(reply["kept"]), "restoreUndone") };
      notices.tell("good", ta(told), undo);
      const missing = asArray(reply["missing"]).map((one) => asText(asObject(one)["name"]));
      if (missing.length) notices.tell("bad", ta("restoreMissing", missing.join(", ")));
    });
  }

  /** What is not saved would be lost among the versions: it is neither in one nor in what is restored. */
  #isSaved(): boolean {
    const { store, notices } = this.app;
    const isSaved = !store.isDirty && !store.saving;
    if (!isSaved) notices.tell("bad", ta("versionUnsaved"));
    return isSaved;
  }

  async #attempt(act: () => Promise<unknown>): Promise<boolean> {
    if (this.isBusy) return false;
    this.isBusy = true;
    const { notices } = this.app;
    try {
      await act();
      return true;
    } catch (error) {
      // The server says in the user's language what is wrong with a version.
      notices.tell("bad", (error instanceof ServerError && error.text) || notices.sentenceOf(error));
      return false;
    } finally {
      this.isBusy = false;
    }
  }
}

/** Its name, or its day and time. */
export function versionTitle({ name, time }: Version): string {
  return name || `${dayText(time)}, ${timeText(time)}`;
}

const locale = () => document.documentElement.lang || undefined;

export function dayText(time: string): string {
  const form = { weekday: "long", day: "numeric", month: "long", year: "numeric" } as const;
  return new Date(time).toLocaleDateString(locale(), form);
}

export function timeText(time: string): string {
  return new Date(time).toLocaleTimeString(locale(), { hour: "2-digit", minute: "2-digit", second: "2-digit" });
}
