/** Whether this tab may see the author's screens, and how often a PIN can be tried. */
import type { Clock } from "../../api/clock.ts";
import { asArray, asNumber, asObject, asText } from "../../model/json.ts";
import type { Lock } from "../../model/lock.ts";
import type { ProjectStore } from "../project/store.svelte.ts";

const openedKey = "openedLocks";
const wrongKey = "wrongPins";
/** The longest pause after a wrong PIN, in seconds; each is twice as long as the one before. */
const longestPause = 64;

export interface GateNeeds {
  readonly store: Pick<ProjectStore, "lock">;
  readonly clock: Clock;
  /** Keeps texts for this tab, and for this browser. */
  readonly session: Pick<Storage, "getItem" | "setItem">;
  readonly storage: Pick<Storage, "getItem" | "setItem">;
}

export class Gate {
  /** The hashes of the locks whose PIN this tab has had. */
  #opened = $state.raw<readonly string[]>([]);
  readonly isClosed = $derived.by(() => {
    const { lock } = this.needs.store;
    return lock !== undefined && !this.#opened.includes(lock.hash);
  });

  constructor(readonly needs: GateNeeds) {
    this.#opened = asArray(parsed(needs.session.getItem(openedKey))).map((one) => asText(one));
  }

  /** Seconds until the next PIN can be tried; 0: now. */
  pause(): number {
    const { until } = this.#wrong();
    // A clock that was set back must not make the pause longer.
    return Math.min(longestPause, Math.max(0, Math.ceil((until - this.needs.clock.date()) / 1000)));
  }

  /** Tries a PIN. The right one opens the lock for this tab. @returns false too while a pause lasts */
  async enter(pin: string, lock: Lock): Promise<boolean> {
    if (this.pause()) return false;
    const { opens } = await import("./pins.ts");
    const isRight = await opens(pin, lock);
    if (isRight) this.know(lock);
    const count = isRight ? 0 : this.#wrong().count + 1;
    const pause = isRight ? 0 : Math.min(longestPause, 2 ** (count - 1));
    this.needs.storage.setItem(wrongKey, JSON.stringify({ count, until: this.needs.clock.date() + pause * 1000 }));
    return isRight;
  }

  /** This tab has set the lock itself, or opened it. */
  know({ hash }: Lock): void {
    this.#opened = [...this.#opened, hash];
    this.needs.session.setItem(openedKey, JSON.stringify(this.#opened));
  }

  #wrong(): { count: number; until: number } {
    const wrong = asObject(parsed(this.needs.storage.getItem(wrongKey)));
    const most = Number.MAX_SAFE_INTEGER;
    return { count: asNumber(wrong["count"], 0, 0, 1000), until: asNumber(wrong["until"], 0, 0, most) };
  }
}

function parsed(text: string | null): unknown {
  try {
    return JSON.parse(text ?? "null");
  } catch {
    return undefined;
  }
}
