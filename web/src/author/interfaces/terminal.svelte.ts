/** The traffic of one interface while it is looked at, and the lines that were sent from here. */
import type { Clock } from "../../api/clock.ts";
import type { Equipment } from "../../api/equipment.ts";
import type { PageEvents } from "../../api/pageEvents.ts";
import { isWanted, readTraffic, type TrafficEntry, type TrafficFilter } from "../../model/traffic.ts";
import type { CommandFields } from "../commands/commandForm.ts";

/** How often the server is asked, in ms. */
const pause = 500;
/** A reply has a bounded number of entries; a device that never stops must not keep this page from the rest. */
const repliesAtOnce = 8;
/** Entries that are kept here; older ones go. */
export const mostEntries = 2000;

export interface TerminalNeeds {
  readonly equipment: Pick<Equipment, "traffic">;
  readonly clock: Clock;
  readonly events: PageEvents;
}

export class Terminal {
  entries = $state.raw<readonly TrafficEntry[]>([]);
  filter = $state.raw<TrafficFilter>({ direction: "all", text: "" });
  isPaused = $state(false);
  /** The server has dropped entries before they were read. */
  isMissed = $state(false);
  /** Entries have gone from here, since there were too many. */
  isCut = $state(false);
  isKept = $state(true);
  fileUntil = $state(0);
  fault = $state.raw<unknown>();
  readonly shown = $derived(this.entries.filter((one) => isWanted(one, this.filter)));

  #last = 0;
  #isAsking = false;

  constructor(
    readonly needs: TerminalNeeds,
    readonly nodeId: number,
  ) {}

  /** Asks now, and again and again while the page is visible. @returns what ends that */
  follow(): () => void {
    void this.ask();
    const timer = this.needs.clock.every(pause, () => this.needs.events.isShown() && void this.ask());
    return () => timer.cancel();
  }

  /** Nothing new comes while it is paused. */
  async ask(): Promise<void> {
    if (this.#isAsking || this.isPaused) return;
    this.#isAsking = true;
    try {
      let isMore = true;
      for (let reply = 0; isMore && reply < repliesAtOnce; ++reply) {
        const read = readTraffic(await this.needs.equipment.traffic(this.nodeId, this.#last));
        isMore = read.entries.length > 0 && read.last > this.#last;
        this.isMissed ||= read.isMissed && this.#last > 0;
        this.#last = Math.max(read.last, this.#last);
        this.isKept = read.isKept;
        this.fileUntil = read.fileUntil;
        this.#add(read.entries);
      }
      this.fault = undefined;
    } catch (error) {
      this.fault = error;
    } finally {
      this.#isAsking = false;
    }
  }

  #add(entries: readonly TrafficEntry[]): void {
    if (!entries.length) return;
    const all = [...this.entries, ...entries];
    this.isCut ||= all.length > mostEntries;
    this.entries = all.slice(-mostEntries);
  }

  clear(): void {
    this.entries = [];
    this.isMissed = this.isCut = false;
  }
}

/** The lines that were sent, for the arrow keys. */
export class SentLines {
  #lines: CommandFields[] = [];
  /** The place of what is shown; the number of lines: what is being typed. */
  #at = 0;
  #typed: CommandFields | undefined;

  add(fields: CommandFields): void {
    const last = this.#lines.at(-1);
    if (JSON.stringify(last) !== JSON.stringify(fields)) this.#lines.push({ ...fields });
    this.#at = this.#lines.length;
  }

  /** The line before or after; nothing at the ends. @param typed  what is in the field now */
  step(by: -1 | 1, typed: CommandFields): CommandFields | undefined {
    const to = this.#at + by;
    if (to < 0 || to > this.#lines.length) return undefined;
    if (this.#at === this.#lines.length) this.#typed = { ...typed };
    this.#at = to;
    const line = this.#lines[to] ?? this.#typed;
    return line && { ...line };
  }
}
