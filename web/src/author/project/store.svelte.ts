/** The author's project: what is edited, what is stored, and the way between the two. */
import { Connection, type ConnectionState } from "../../api/connection.ts";
import { webSocketPort } from "../../api/port.ts";
import { server } from "../../api/server.ts";
import { reportError } from "../../api/errors.ts";
import { type History, redo, startHistory, step, undo } from "../../model/history.ts";
import { type Command, mapCommands, readInteractions, writeCommand } from "../../model/interactions.ts";
import { type Interface, readInterfaces } from "../../model/interfaces.ts";
import { asArray, asObject, isObject } from "../../model/json.ts";
import { isChanged, mineAsCopy } from "../../model/merge.ts";
import { emptyProject, type Project, sameProject } from "../../model/project.ts";
import { isRefused, type Refusal } from "../../model/readLayout.ts";
import { type Pictures, PictureStore } from "../../view/pictures.ts";
import { ta } from "../../i18n/author.ts";
import { Drafts } from "./draft.ts";
import { readStored, writeStored } from "./documents.ts";

/** Pause after a change before the draft is written, in ms. */
const draftPause = 300;

export class ProjectStore {
  /** Null until everything was read. */
  history = $state.raw<History<Project>>(startHistory(emptyProject));
  status = $state<"loading" | "ready" | "unreachable" | "refused">("loading");
  refused = $state.raw<Refusal | undefined>();
  interfaces = $state.raw<readonly Interface[]>([]);
  connection = $state<ConnectionState>("connecting");
  saving = $state(false);
  /** What somebody else has stored meanwhile; the author has to choose. */
  conflict = $state.raw<Project | undefined>();
  /** When the draft was kept that this session goes on with; 0: none. */
  restored = $state(0);
  /** What is stored, as far as this session knows. */
  base = $state.raw<Project>(emptyProject);

  readonly project = $derived(this.history.present);
  readonly isDirty = $derived(this.project !== this.base);
  readonly interfaceIds = $derived(new Set(this.interfaces.map((one) => one.nodeId)));
  readonly pictures: Pictures = $derived.by(() => this.#pictureStore.update(this.project.materials));

  #pictureStore = new PictureStore();
  #drafts = new Drafts();
  #draftTimer: ReturnType<typeof setTimeout> | undefined;
  #lastTag = "";

  constructor() {
    new Connection(webSocketPort, (state) => {
      this.connection = state;
      if (state === "open") void this.refresh();
    });
    document.addEventListener("visibilitychange", () => document.visibilityState === "visible" && void this.refresh());
    addEventListener("beforeunload", (event) => this.isDirty && this.saving && event.preventDefault());
  }

  async load(): Promise<void> {
    try {
      const [stored, interfaces] = await Promise.all([readStored(), server.interfaces()]);
      this.interfaces = readInterfaces(interfaces);
      if (isRefused(stored)) {
        this.refused = stored;
        this.status = "refused";
        return;
      }
      this.base = stored;
      this.history = startHistory(stored);
      await this.#takeDraft();
      this.status = "ready";
    } catch {
      this.status = "unreachable";
    }
  }

  async #takeDraft(): Promise<void> {
    try {
      const draft = await this.#drafts.adopt();
      if (!draft) return;
      if (sameProject(draft.project, this.base)) return void (await this.#drafts.clear());
      this.base = draft.base;
      this.history = startHistory(draft.project);
      this.restored = draft.time;
      await this.#drafts.keep(draft.base, draft.project);
    } catch (error) {
      // Without the browser's database there are no drafts; everything else works.
      reportError(error, "draft");
    }
  }

  /** Starts anew where the stored pages can't be read: nothing is replaced before the next save. */
  startAnew(): void {
    this.refused = undefined;
    this.base = emptyProject;
    this.history = startHistory({ ...emptyProject });
    this.status = "ready";
  }

  /** Reads the interfaces again, and the documents while nothing is unsaved. */
  async refresh(): Promise<void> {
    if (this.status === "unreachable") return this.load();
    if (this.status !== "ready") return;
    try {
      this.interfaces = readInterfaces(await server.interfaces());
      if (this.isDirty || this.saving) return;
      const stored = await readStored();
      if (this.isDirty || this.saving || isRefused(stored) || sameProject(stored, this.base)) return;
      this.base = stored;
      this.history = startHistory(stored);
    } catch {
      // The connection's state tells it already; the next refresh tries again.
    }
  }

  /** One step of the history. Steps with the same tag in a row become one, as the letters of a text do. */
  change(next: Project, tag = ""): void {
    if (next === this.project) return;
    if (tag && tag === this.#lastTag) this.history = { ...this.history, present: next, future: [] };
    else this.history = step(this.history, next);
    this.#lastTag = tag;
    this.#keepDraft();
  }

  /** The next change is a step of its own. */
  endStep(): void {
    this.#lastTag = "";
  }

  undo(): void {
    this.#lastTag = "";
    this.history = undo(this.history);
    this.#keepDraft();
  }

  redo(): void {
    this.#lastTag = "";
    this.history = redo(this.history);
    this.#keepDraft();
  }

  #keepDraft(): void {
    clearTimeout(this.#draftTimer);
    this.#draftTimer = setTimeout(() => {
      const kept = this.isDirty ? this.#drafts.keep(this.base, this.project) : this.#drafts.clear();
      kept.catch((error: unknown) => reportError(error, "draft"));
    }, draftPause);
  }

  /** Goes back to what is stored. The step can be undone. */
  async discard(): Promise<void> {
    const stored = await readStored();
    if (isRefused(stored)) return;
    this.#adopt(stored);
    this.restored = 0;
  }

  #adopt(stored: Project): void {
    this.history = step(this.history, stored);
    this.base = stored;
    this.#lastTag = "";
    this.#keepDraft();
  }

  /**
   * Stores the project, unless somebody else has stored another one since it was read: then `conflict` is set.
   * @throws ServerError when the server can't be reached or refuses
   */
  async save(): Promise<"saved" | "conflict"> {
    this.saving = true;
    try {
      const [stored, interfaces] = await Promise.all([readStored(), server.interfaces()]);
      this.interfaces = readInterfaces(interfaces);
      const theirs = isRefused(stored) ? this.base : stored;
      if (!isRefused(stored) && isChanged(this.base, stored, this.project, this.interfaceIds)) {
        this.conflict = stored;
        return "conflict";
      }
      await this.#write(theirs);
      return "saved";
    } finally {
      this.saving = false;
    }
  }

  async resolve(choice: "theirs" | "mine" | "copy"): Promise<void> {
    const theirs = this.conflict;
    if (!theirs) return;
    if (choice === "theirs") {
      this.#adopt(theirs);
    } else {
      this.saving = true;
      try {
        if (choice === "copy") {
          this.change(mineAsCopy(this.base, this.project, theirs, (page) => ta("myCopyOf", page.name)));
        }
        await this.#write(theirs);
      } finally {
        this.saving = false;
      }
    }
    this.conflict = undefined;
  }

  async #write(stored: Project): Promise<void> {
    const project = this.#withoutStrayIds(this.project);
    await writeStored(project, stored);
    this.history = { ...this.history, present: project };
    this.base = project;
    this.restored = 0;
    this.#lastTag = "";
    this.#keepDraft();
  }

  /**
   * Commands of deleted interfaces are kept for the author, but under ids that no interface ever gets: the server may
   * give the old ones to other equipment after its next start.
   */
  #withoutStrayIds(project: Project): Project {
    const isStray = (one: Command) => one.portIndex > 0 && !this.interfaceIds.has(one.portIndex);
    let found = false;
    const interactions = mapCommands(project.interactions, (one) => {
      found ||= isStray(one);
      return isStray(one) ? { ...one, portIndex: -one.portIndex } : one;
    });
    return found ? { ...project, interactions } : project;
  }

  /** Stores the commands of one trigger, nothing else, and fires them. @throws ServerError */
  async sendNow(componentId: number, trigger: string, commands: readonly Command[]): Promise<void> {
    const document = asObject(await server.interactions());
    const info = asObject(document["componentInteractionInfo"]);
    const components = asArray(info["componentArr"]).filter(isObject);
    const component = components.find((one) => one["componentId"] === componentId) ?? { componentId, interactionArr: [] };
    const others = asArray(component["interactionArr"]).filter((one) => asObject(one)["triggerType"] !== trigger);
    const interaction = { triggerType: trigger, commandArr: commands.map(writeCommand) };
    const changed = { ...component, interactionArr: [...others, interaction] };
    const componentArr = [...components.filter((one) => one["componentId"] !== componentId), changed];
    const next = { ...document, componentInteractionInfo: { ...info, componentArr } };
    await server.storeInteractions(next);
    this.#storedInteractions(next);
    await server.click(componentId, trigger);
  }

  #storedInteractions(document: object): void {
    const base = { ...this.base, interactions: readInteractions(document) };
    this.base = sameProject(base, this.project) ? this.project : base;
    this.#keepDraft();
  }

  async reloadInterfaces(): Promise<void> {
    this.interfaces = readInterfaces(await server.interfaces());
  }
}

export const store = new ProjectStore();
