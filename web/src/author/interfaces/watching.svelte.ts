/** What the device of one interface is asked and how its answers are understood, while an author works on it. */
import type { Clock } from "../../api/clock.ts";
import type { Equipment } from "../../api/equipment.ts";
import type { PageEvents } from "../../api/pageEvents.ts";
import type { Stored } from "../../api/server.ts";
import { type DeviceRule, newRule, type PatternRule, ruleIn, withRule } from "../../model/equipmentConfig.ts";
import { sameJson } from "../../model/json.ts";
import { messagesIn, readPatterns, understand } from "../../model/understood.ts";
import { changeConfig } from "./changeConfig.ts";
import { Terminal } from "./terminal.svelte.ts";

export interface WatchingNeeds {
  readonly equipment: Pick<Equipment, "askDevice" | "config" | "storeConfig" | "traffic">;
  readonly clock: Clock;
  readonly events: PageEvents;
}

/** In ms: a device is asked for ten seconds after the server was told to. */
const askAgain = 4000;
/** Messages that are shown; older ones are left out. */
const mostMessages = 200;

export class Watching {
  rule = $state.raw<DeviceRule>(newRule);
  isRead = $state(false);
  readonly traffic: Terminal;
  readonly messages = $derived.by(() => messagesIn(this.traffic.entries, this.rule.framing).slice(-mostMessages));
  readonly patterns = $derived(readPatterns(this.rule));
  readonly understood = $derived(this.messages.map((one) => understand(one, this.rule.patterns, this.patterns)));
  #stored = $state.raw<Stored>({ data: undefined, tag: "" });

  constructor(
    readonly needs: WatchingNeeds,
    readonly nodeId: number,
  ) {
    this.traffic = new Terminal(needs, nodeId);
  }

  /** Has the device asked its stored questions, and reads its messages. @returns what ends that */
  follow(): () => void {
    const { events, clock } = this.needs;
    this.#ask();
    const timer = clock.every(askAgain, () => events.isShown() && this.#ask());
    const endTraffic = this.traffic.follow();
    return () => (timer.cancel(), endTraffic());
  }

  #ask(): void {
    // A fault is told by the traffic, which is read from the same server.
    void this.needs.equipment.askDevice(this.nodeId).catch(() => undefined);
  }

  /** Whether something is not stored yet. */
  get isChanged(): boolean {
    return this.isRead && !sameJson(this.rule, ruleIn(this.#stored.data, this.nodeId));
  }

  async read(): Promise<void> {
    this.#stored = await this.needs.equipment.config();
    this.rule = ruleIn(this.#stored.data, this.nodeId);
    this.isRead = true;
  }

  change(change: Partial<DeviceRule>): void {
    this.rule = { ...this.rule, ...change };
  }

  changePattern(at: number, pattern: PatternRule | undefined): void {
    const patterns = this.rule.patterns.flatMap((one, index) => (index !== at ? [one] : pattern ? [pattern] : []));
    this.change({ patterns });
  }

  /** Stores this rule. What others have stored meanwhile for other interfaces stays. */
  async store(): Promise<void> {
    const { equipment } = this.needs;
    await changeConfig(equipment, (document) => withRule(document, this.nodeId, this.rule));
    this.#stored = await equipment.config();
    this.#ask(); // what is new as well
  }
}
