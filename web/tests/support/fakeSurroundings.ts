import type { ConnectionState } from "../../src/api/connection.ts";
import type { Draft } from "../../src/author/project/draft.ts";
import type { StoreNeeds } from "../../src/author/project/store.svelte.ts";
import type { Project } from "../../src/model/project.ts";
import { FakeClock } from "./fakeClock.ts";
import { FakeEvents } from "./fakeEvents.ts";
import { FakeServer } from "./fakeServer.ts";
import { settled } from "./settled.ts";

/** All that a project's store has around it, as a test has it. */
export class FakeSurroundings implements StoreNeeds {
  readonly clock = new FakeClock();
  readonly events = new FakeEvents();
  readonly server = new FakeServer();
  readonly errors: string[] = [];
  /** The draft that this tab has, and how often one was written or cleared. */
  draft: Draft | undefined;
  draftWrites = 0;
  /** What becomes of every call of the drafts. */
  draftError: Error | undefined;
  #changed: (state: ConnectionState) => void = () => undefined;

  readonly connection = { start: (changed: (state: ConnectionState) => void) => void (this.#changed = changed) };

  readonly drafts = {
    adopt: () => this.#withDrafts(() => this.draft),
    keep: (base: Project, project: Project) => this.#writeDraft({ tab: "t1", time: this.clock.date(), base, project }),
    clear: () => this.#writeDraft(undefined),
  };

  readonly reportError = (error: unknown, source: string) => void this.errors.push(`${source}: ${String(error)}`);

  async connect(state: ConnectionState): Promise<void> {
    this.#changed(state);
    await settled();
  }

  #writeDraft(draft: Draft | undefined): Promise<void> {
    this.draftWrites += 1;
    return this.#withDrafts(() => void (this.draft = draft));
  }

  async #withDrafts<Value>(act: () => Value): Promise<Value> {
    await Promise.resolve();
    if (this.draftError) throw this.draftError;
    return act();
  }
}
