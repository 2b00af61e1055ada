/** The states of the interfaces while a screen shows them. */
import type { Clock } from "../../api/clock.ts";
import type { Equipment } from "../../api/equipment.ts";
import type { PageEvents } from "../../api/pageEvents.ts";
import { type InterfaceState, readInterfaceStates } from "../../model/interfaceStates.ts";

/** How often the server is asked, in ms. */
const pause = 2000;

export interface StatesNeeds {
  readonly equipment: Pick<Equipment, "interfaceStates">;
  readonly clock: Clock;
  readonly events: PageEvents;
}

export class InterfaceStates {
  /** By node id; undefined until the server has answered. */
  known = $state.raw<ReadonlyMap<number, InterfaceState> | undefined>();
  /** Why the states could not be read the last time. */
  fault = $state.raw<unknown>();

  #isAsking = false;

  constructor(readonly needs: StatesNeeds) {}

  /** Asks now, and again and again while the page is visible. @returns what ends that */
  follow(): () => void {
    void this.ask();
    const timer = this.needs.clock.every(pause, () => this.needs.events.isShown() && void this.ask());
    return () => timer.cancel();
  }

  async ask(): Promise<void> {
    if (this.#isAsking) return;
    this.#isAsking = true;
    try {
      this.known = readInterfaceStates(await this.needs.equipment.interfaceStates());
      this.fault = undefined;
    } catch (error) {
      this.fault = error;
    } finally {
      this.#isAsking = false;
    }
  }
}
