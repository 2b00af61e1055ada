/** The author's project: what is edited, what is stored, and the transfer between the two. */
import type { Clock, Timer } from "../../api/clock.ts";
import type { Connection, ConnectionState } from "../../api/connection.ts";
import type { ReportError } from "../../api/errors.ts";
import type { PageEvents } from "../../api/pageEvents.ts";
import { codes, type Server, ServerError } from "../../api/server.ts";
import { type History, mapHistory, redo, startHistory, step, undo } from "../../model/history.ts";
import { type Command, mapCommands } from "../../model/interactions.ts";
import { type Interface, readInterfaces } from "../../model/interfaces.ts";
import type { Lock } from "../../model/lock.ts";
import { isChanged, withCopies, withKnownCommands } from "../../model/merge.ts";
import { asRead, emptyProject, type Project, sameProject, withCommands } from "../../model/project.ts";
import { isRefused, type Refusal } from "../../model/readLayout.ts";
import { type Choices, type Clash, mergeProjects } from "../../model/threeWay.ts";
import { type Pictures, PictureStore } from "../../view/pictures.ts";
import { ta } from "../../i18n/author.ts";
import type { Drafts } from "./draft.ts";
import { type DocumentServer, readStored, type Snapshot, storeCommands, writeStored } from "./documents.ts";

/**
 * In ms: the shortest pause between two writes of the draft, the longest between two changes of one step, and the pause
 * between two looks whether somebody else has saved.
 */
const times = { draft: 300, step: 3000, look: 10_000 };
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
  /** The lock that was stored when this session began. One that is set later holds from the next start on. */
  lock = $state.raw<Lock | undefined>();
  interfaces = $state.raw<readonly Interface[]>([]);
  connection = $state<ConnectionState>("connecting");
  saving = $state(false);
  /** What somebody else has stored meanwhile, while the author has to choose about it. */
  conflict = $state.raw<Project | undefined>();
  /** What is stored, as far as this session knows. */
  base = $state.raw<Project>(emptyProject);

  readonly project = $derived(this.history.present);
  readonly isDirty = $derived(this.project !== this.base);
  /** The draft with which this session has begun, until it is stored or given up. */
  #draft = $state.raw<{ project: Project; time: number } | undefined>();
  /** The time of the draft, as long as it is what the author sees; otherwise 0. */
  readonly restored = $derived(this.isDirty && this.#draft?.project === this.project ? this.#draft.time : 0);
  #others = $state.raw<Project | undefined>();
  /** What somebody else has stored meanwhile; the next save merges it with what is unsaved here. */
  readonly others = $derived(this.isDirty ? this.#others : undefined);
  /** What both have changed: in `conflict`, otherwise in `others`. */
  readonly clashes: readonly Clash[] = $derived.by(() => {
    const theirs = this.conflict ?? this.others;
    return theirs ? mergeProjects(this.base, this.project, theirs).clashes : [];
  });
  readonly interfaceIds = $derived(new Set(this.interfaces.map((one) => one.nodeId)));
  readonly pictures: Pictures = $derived.by(() => this.#pictureStore.update(this.project.materials));

  #pictureStore = new PictureStore();
  #draftTimer: Timer | undefined;
  #draftTime = 0;
  #lastTag = "";
  #lastTime = 0;
  /** The state of the layout that was read last. */
  #seen = "";

  constructor(readonly needs: StoreNeeds) {
    needs.connection.start((state) => {
      this.connection = state;
      if (state === "open") void this.refresh();
    });
    needs.events.on("shown", () => void this.refresh());
    needs.clock.every(times.look, () => void this.#look());
  }

  async load(): Promise<void> {
    try {
      const [stored, interfaces] = await Promise.all([this.#read(), this.needs.server.interfaces()]);
      this.interfaces = readInterfaces(interfaces);
      if (isRefused(stored)) {
        this.refused = stored;
        this.status = "refused";
        return;
      }
      this.lock = stored.layout.panel.lock;
      this.base = stored;
      this.history = startHistory(stored);
      await this.#takeDraft();
      this.#notice(stored);
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

  /** Reads the interfaces and the documents again. */
  async refresh(): Promise<void> {
    if (this.status === "unreachable") return this.load();
    if (this.status !== "ready") return;
    try {
      this.interfaces = readInterfaces(await this.needs.server.interfaces());
      await this.#readAgain();
    } catch {
      // The connection's state shows it already; the next refresh tries again.
    }
  }

  /** Whether somebody else has saved. Each save stores another layout, since its time is in it. */
  async #look(): Promise<void> {
    if (this.status !== "ready" || this.saving || !this.needs.events.isShown()) return;
    try {
      const { tag } = await this.needs.server.layout();
      if (tag !== this.#seen || (this.#others && !this.isDirty)) await this.#readAgain();
    } catch {
      // As in a refresh.
    }
  }

  /** What others have stored is taken over while nothing is unsaved; otherwise it is told. */
  async #readAgain(): Promise<void> {
    if (this.saving) return;
    const { base } = this;
    const stored = await this.#read();
    // After a save in between, what was read is out of date.
    if (isRefused(stored) || this.saving || this.base !== base) return;
    this.#notice(stored);
    if (this.#others && !this.isDirty) this.#rebase(this.#others);
  }

  async #read(): Promise<Project | Refusal> {
    const { project, layout } = await readStored(this.needs.server);
    this.#seen = layout.tag;
    return project;
  }

  #notice(stored: Project): void {
    const isTheirs = isChanged(this.base, stored, this.project, this.interfaceIds);
    this.#others = isTheirs ? withKnownCommands(stored, [this.base, this.project], this.interfaceIds) : undefined;
  }

  /** What others have stored is told no more, until they store something else. */
  ignoreOthers(): void {
    this.#others = undefined;
  }

  /**
   * Puts every state of the history on top of what somebody else has stored, so that undo never takes back what is not
   * the author's. Where both have changed the same, the author's version stays.
   */
  #rebase(theirs: Project): void {
    const { base } = this;
    this.history = mapHistory(this.history, (one) => mergeProjects(base, one, theirs).project);
    this.base = theirs;
    this.#others = undefined;
    this.#lastTag = "";
    this.#keepDraft();
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
    const stored = await this.#read();
    if (isRefused(stored) || this.saving || this.project !== project || this.base !== base) return;
    this.history = step(this.history, stored);
    this.base = stored;
    this.#others = undefined;
    this.#draft = undefined;
    this.#lastTag = "";
    this.#keepDraft();
  }

  /** Goes on with the draft: `restored` is 0 from now on. */
  acceptDraft(): void {
    this.#draft = undefined;
  }

  /**
   * Stores the project, merged with what somebody else has stored since it was read. That includes anything stored while
   * the writes are under way: they name the states that they replace. When both have changed the same, nothing is
   * stored, and `conflict` is set.
   * @throws ServerError when the server can't be reached or refuses
   */
  async save(): Promise<"saved" | "merged" | "conflict"> {
    let result: "saved" | "merged" = "saved";
    this.saving = true;
    try {
      for (let attempt = 1; attempt <= mostAttempts; ++attempt) {
        const [stored, interfaces] = await Promise.all([readStored(this.needs.server), this.needs.server.interfaces()]);
        this.interfaces = readInterfaces(interfaces);
        if (!isRefused(stored.project) && isChanged(this.base, stored.project, this.project, this.interfaceIds)) {
          if (!this.#merge(stored.project)) return "conflict";
          result = "merged";
        }
        if (await this.#write(stored)) return result;
      }
      throw new ServerError(codes.changed);
    } finally {
      this.saving = false;
    }
  }

  /** @returns false when both have changed something about which nothing is chosen */
  #merge(stored: Project, choices: Choices = new Map()): boolean {
    const theirs = withKnownCommands(stored, [this.base, this.project], this.interfaceIds);
    const { project, clashes } = mergeProjects(this.base, this.project, theirs, choices);
    if (clashes.some((one) => !choices.has(one.key))) {
      this.conflict = theirs;
      this.#others = theirs;
      return false;
    }
    this.#rebase(theirs);
    // A step of its own: undo brings the author's versions back.
    if ([...choices.values()].includes("theirs")) this.change(sameProject(project, theirs) ? theirs : project);
    return true;
  }

  /**
   * Merges as the author has chosen about `conflict`, and saves.
   * @param isCopied  pages of mine about which theirs was chosen are kept as copies
   * @returns whether the conflict is over; otherwise yet another one was found, and the author has to choose again
   */
  async resolve(choices: Choices, isCopied = false): Promise<boolean> {
    const { conflict: theirs, clashes, project } = this;
    this.conflict = undefined;
    if (!theirs) return true;
    // From here on the author knows what is replaced, even if the server can't be reached at the moment.
    if (!this.#merge(theirs, choices)) return false;
    if (isCopied) {
      const pageIds = new Set(clashes.map((one) => one.pageId));
      this.change(withCopies(this.project, project, pageIds, (page) => ta("myCopyOf", page.name)));
    }
    return !this.isDirty || (await this.save()) !== "conflict";
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
    this.#others = undefined;
    this.#draft = undefined;
    // At once: after a reload in between, the draft would seem to be newer work.
    this.#draftTimer?.cancel();
    this.#writeDraft();
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
    for (let attempt = 1; !(await storeCommands(this.needs.server, componentId, trigger, commands)); ++attempt) {
      if (attempt === mostAttempts) throw new ServerError(codes.changed);
    }
    this.#sent(componentId, trigger, commands);
    await this.needs.server.click(componentId, trigger);
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
