/** The author's project: what is edited, what is stored, and the transfer between the two. */
import type { Clock, Timer } from "../../api/clock.ts";
import type { Connection, ConnectionState } from "../../api/connection.ts";
import type { ReportError } from "../../api/errors.ts";
import type { PageEvents } from "../../api/pageEvents.ts";
import { codes, type Server, ServerError } from "../../api/server.ts";
import { type History, mapHistory, redo, startHistory, step, undo } from "../../model/history.ts";
import { type Command, mapCommands, writeCommand } from "../../model/interactions.ts";
import { type Interface, readInterfaces } from "../../model/interfaces.ts";
import { asArray, asObject, isObject } from "../../model/json.ts";
import { isChanged, mineAsCopy } from "../../model/merge.ts";
import { asRead, emptyProject, type Project, sameProject, withCommands } from "../../model/project.ts";
import { isRefused, type Refusal } from "../../model/readLayout.ts";
import { type Pictures, PictureStore } from "../../view/pictures.ts";
import { ta } from "../../i18n/author.ts";
import type { Drafts } from "./draft.ts";
import { type DocumentServer, isOvertaken, readStored, type Snapshot, writeStored } from "./documents.ts";

/** Shortest pause between two writes of the draft, and longest pause between two changes of one step, in ms. */
const times = { draft: 300, step: 3000 };
/** How often a save is tried again when others were faster. */
const mostAttempts = 5;

/** Everything that the store uses from outside. */
export interface StoreNeeds {
  readonly server: DocumentServer & Pick<Server, "interfaces" | "click">;
  readonly drafts: Pick<Drafts, "adopt" | "keep" | "clear">;
  readonly connection: Pick<Connection, "start">;
  readonly clock: Clock;
  readonly events: PageEvents;
  readonly reportError: ReportError;
}

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
  /** What is stored, as far as this session knows. */
  base = $state.raw<Project>(emptyProject);

  readonly project = $derived(this.history.present);
  readonly isDirty = $derived(this.project !== this.base);
  /** The draft with which this session has begun, until it is stored or given up. */
  #draft = $state.raw<{ project: Project; time: number } | undefined>();
  /** The time of the draft, as long as it is what the author sees; otherwise 0. */
  readonly restored = $derived(this.isDirty && this.#draft?.project === this.project ? this.#draft.time : 0);
  readonly interfaceIds = $derived(new Set(this.interfaces.map((one) => one.nodeId)));
  readonly pictures: Pictures = $derived.by(() => this.#pictureStore.update(this.project.materials));

  #pictureStore = new PictureStore();
  #draftTimer: Timer | undefined;
  #draftTime = 0;
  #lastTag = "";
  #lastTime = 0;

  constructor(readonly needs: StoreNeeds) {
    needs.connection.start((state) => {
      this.connection = state;
      if (state === "open") void this.refresh();
    });
    needs.events.on("shown", () => void this.refresh());
  }

  async load(): Promise<void> {
    try {
      const [{ project: stored }, interfaces] = await Promise.all([
        readStored(this.needs.server),
        this.needs.server.interfaces(),
      ]);
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
      const kept = await this.needs.drafts.adopt();
      if (!kept) return;
      const draft = { ...kept, base: asRead(kept.base), project: asRead(kept.project) };
      if (sameProject(draft.project, this.base)) return void (await this.needs.drafts.clear());
      // Undo leads back to the stored project, even when the notice that offers to discard the draft is gone.
      if (!sameProject(draft.base, this.base)) this.base = draft.base;
      this.history = step(this.history, draft.project);
      this.#draft = draft;
      await this.needs.drafts.keep(draft.base, draft.project);
    } catch (error) {
      // Without the browser's database there are no drafts; everything else works.
      this.needs.reportError(error, "draft");
    }
  }

  /** Starts with an empty project when the stored pages can't be read: nothing is replaced before the next save. */
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
      this.interfaces = readInterfaces(await this.needs.server.interfaces());
      if (this.isDirty || this.saving) return;
      const { base } = this;
      const { project: stored } = await readStored(this.needs.server);
      // After a save in between, what was read is out of date.
      if (this.isDirty || this.saving || this.base !== base) return;
      if (isRefused(stored) || sameProject(stored, base)) return;
      this.base = stored;
      this.history = startHistory(stored);
    } catch {
      // The connection's state shows it already; the next refresh tries again.
    }
  }

  /** One step of the history. Steps with the same tag in a row become one, as the letters of a text do. */
  change(next: Project, tag = ""): void {
    if (next === this.project) return;
    const now = this.needs.clock.now();
    if (tag && tag === this.#lastTag && now - this.#lastTime < times.step) {
      this.history = { ...this.history, present: next, future: [] };
    } else {
      this.history = step(this.history, next);
    }
    this.#lastTag = tag;
    this.#lastTime = now;
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
    this.#draftTimer?.cancel();
    const pause = this.#draftTime + times.draft - this.needs.clock.now();
    this.#draftTimer = this.needs.clock.after(Math.max(0, pause), () => this.#writeDraft());
  }

  #writeDraft(): void {
    this.#draftTime = this.needs.clock.now();
    const kept = this.isDirty ? this.needs.drafts.keep(this.base, this.project) : this.needs.drafts.clear();
    kept.catch((error: unknown) => this.needs.reportError(error, "draft"));
  }

  /** Goes back to what is stored, unless the project is changed or saved meanwhile. The step can be undone. */
  async discard(): Promise<void> {
    const { project, base } = this;
    const { project: stored } = await readStored(this.needs.server);
    if (isRefused(stored) || this.saving || this.project !== project || this.base !== base) return;
    this.#adopt(stored);
  }

  #adopt(stored: Project): void {
    this.history = step(this.history, stored);
    this.base = stored;
    this.#draft = undefined;
    this.#lastTag = "";
    this.#keepDraft();
  }

  /** Goes on with the draft: `restored` is 0 from now on. */
  acceptDraft(): void {
    this.#draft = undefined;
  }

  /**
   * Stores the project, unless somebody else has stored another one since it was read: then `conflict` is set. That
   * includes anything stored while the writes are under way: they name the states that they replace.
   * @throws ServerError when the server can't be reached or refuses
   */
  async save(): Promise<"saved" | "conflict"> {
    this.saving = true;
    try {
      for (let attempt = 1; ; ++attempt) {
        const [stored, interfaces] = await Promise.all([readStored(this.needs.server), this.needs.server.interfaces()]);
        this.interfaces = readInterfaces(interfaces);
        if (
          !isRefused(stored.project) &&
          (attempt > mostAttempts || isChanged(this.base, stored.project, this.project, this.interfaceIds))
        ) {
          this.conflict = stored.project;
          return "conflict";
        }
        if (await this.#write(stored)) return "saved";
      }
    } finally {
      this.saving = false;
    }
  }

  /** @returns whether the conflict is over; otherwise yet another one was found, and the author has to choose again */
  async resolve(choice: "theirs" | "mine" | "copy"): Promise<boolean> {
    const theirs = this.conflict;
    this.conflict = undefined;
    if (!theirs) return true;
    if (choice === "theirs") {
      this.#adopt(theirs);
      return true;
    }
    if (choice === "copy") {
      this.change(mineAsCopy(this.base, this.project, theirs, (page) => ta("myCopyOf", page.name)));
    }
    // From here on the author knows that this project replaces theirs, even if the server can't be reached at the
    // moment.
    this.base = theirs;
    this.#keepDraft();
    return (await this.save()) === "saved";
  }

  /** @returns false when something else has been stored meanwhile */
  async #write(stored: Snapshot): Promise<boolean> {
    const current = this.project;
    const project = this.#withoutStrayIds(current);
    // What is changed from here on is a step of its own, on top of the project that is being written.
    this.#lastTag = "";
    if (!(await writeStored(this.needs.server, project, stored, this.needs.clock.date()))) return false;
    this.history = mapHistory(this.history, (one) => (one === current ? project : one));
    this.base = project;
    this.#draft = undefined;
    this.#keepDraft();
    return true;
  }

  /**
   * Keeps commands of deleted interfaces for the author, but under ids that no interface ever gets: the server may give
   * the old ids to other equipment after its next start.
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

  /** Stores only the commands of one trigger, and fires them. @throws ServerError */
  async sendNow(componentId: number, trigger: string, commands: readonly Command[]): Promise<void> {
    for (let attempt = 1; !(await this.#storeCommands(componentId, trigger, commands)); ++attempt) {
      if (attempt === mostAttempts) throw new ServerError(codes.changed);
    }
    this.#sent(componentId, trigger, commands);
    await this.needs.server.click(componentId, trigger);
  }

  /** @returns false when somebody else has stored commands at the same time */
  async #storeCommands(componentId: number, trigger: string, commands: readonly Command[]): Promise<boolean> {
    const stored = await this.needs.server.interactions();
    const document = asObject(stored.data);
    const info = asObject(document["componentInteractionInfo"]);
    const components = asArray(info["componentArr"]).filter(isObject);
    const component = components.find((one) => one["componentId"] === componentId) ?? {
      componentId,
      interactionArr: [],
    };
    const others = asArray(component["interactionArr"]).filter((one) => asObject(one)["triggerType"] !== trigger);
    const interaction = { triggerType: trigger, commandArr: commands.map(writeCommand) };
    const changed = { ...component, interactionArr: [...others, interaction] };
    const componentArr = [...components.filter((one) => one["componentId"] !== componentId), changed];
    const next = { ...document, componentInteractionInfo: { ...info, componentArr } };
    try {
      await this.needs.server.storeInteractions(next, stored.tag);
      return true;
    } catch (error) {
      if (!isOvertaken(error)) throw error;
      return false;
    }
  }

  /**
   * What somebody else may have stored beside it is not known here yet, and stays something for the next save to
   * find.
   */
  #sent(componentId: number, trigger: string, commands: readonly Command[]): void {
    const before = this.base.interactions[componentId] ?? { triggers: {} };
    const base = withCommands(this.base, componentId, {
      ...before,
      triggers: { ...before.triggers, [trigger]: commands },
    });
    this.base = [this.project, this.base].find((one) => sameProject(one, base)) ?? base;
    this.#keepDraft();
  }

  async reloadInterfaces(): Promise<void> {
    this.interfaces = readInterfaces(await this.needs.server.interfaces());
  }
}
