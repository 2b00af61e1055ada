/**
 * Unsaved work, kept in this browser so that it survives a reload. One draft for each tab; the draft of a tab that
 * was closed goes to the next one that starts.
 */
import type { Clock } from "../../api/clock.ts";
import type { Project } from "../../model/project.ts";
import { newId } from "../../model/ids.ts";

export interface Draft {
  readonly tab: string;
  readonly time: number;
  /** What was stored when the work began. */
  readonly base: Project;
  readonly project: Project;
}

const storeName = "drafts";

function openStore(): Promise<IDBDatabase> {
  return new Promise((resolve, reject) => {
    const request = indexedDB.open("control-author", 1);
    request.onupgradeneeded = () => request.result.createObjectStore(storeName, { keyPath: "tab" });
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error ?? new Error("no database"));
  });
}

async function use<Value>(mode: IDBTransactionMode, act: (store: IDBObjectStore) => IDBRequest<Value>): Promise<Value> {
  const database = await openStore();
  try {
    return await new Promise((resolve, reject) => {
      const transaction = database.transaction(storeName, mode);
      const request = act(transaction.objectStore(storeName));
      transaction.oncomplete = () => resolve(request.result);
      transaction.onabort = () => reject(transaction.error ?? new Error("aborted"));
      transaction.onerror = () => reject(transaction.error ?? new Error("failed"));
    });
  } finally {
    database.close();
  }
}

/** How long a starting tab waits for other tabs to answer, in ms. */
const answerTime = 150;
const tabKey = "tab";

/** The drafts as one tab sees them. */
export class Drafts {
  #tab = sessionStorage.getItem(tabKey) ?? newId("t");
  readonly #channel = new BroadcastChannel("control-author");

  constructor(readonly clock: Clock) {}

  /** The draft with which this tab continues, if there is one. Call once, before anything else. */
  async adopt(): Promise<Draft | undefined> {
    const others = await this.#otherTabs();
    // A tab that was duplicated has the id of its original.
    if (others.has(this.#tab)) this.#tab = newId("t");
    sessionStorage.setItem(tabKey, this.#tab);
    this.#channel.onmessage = ({ data }) => data === "who" && this.#channel.postMessage(this.#tab);
    const drafts = await use<Draft[]>("readonly", (store) => store.getAll() as IDBRequest<Draft[]>);
    const free = drafts.filter((draft) => !others.has(draft.tab)).sort((one, other) => other.time - one.time);
    const mine = free.find((draft) => draft.tab === this.#tab) ?? free[0];
    if (mine && mine.tab !== this.#tab) await this.#drop(mine.tab);
    return mine;
  }

  async keep(base: Project, project: Project): Promise<void> {
    await use("readwrite", (store) =>
      store.put({ tab: this.#tab, time: this.clock.date(), base, project } satisfies Draft),
    );
  }

  async clear(): Promise<void> {
    await this.#drop(this.#tab);
  }

  async #drop(tab: string): Promise<void> {
    await use("readwrite", (store) => store.delete(tab));
  }

  #otherTabs(): Promise<Set<string>> {
    const others = new Set<string>();
    this.#channel.onmessage = ({ data }) => typeof data === "string" && data !== "who" && others.add(data);
    this.#channel.postMessage("who");
    return new Promise((resolve) => this.clock.after(answerTime, () => resolve(others)));
  }
}
