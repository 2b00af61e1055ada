import type { PageEvent, PageEvents } from "../../src/api/pageEvents.ts";
import { settled } from "./settled.ts";

/** Events from outside a page, as a test triggers them. */
export class FakeEvents implements PageEvents {
  shown = true;
  readonly #acts: { event: PageEvent; act: () => void }[] = [];

  on(event: PageEvent, act: () => void): void {
    this.#acts.push({ event, act });
  }

  isShown = () => this.shown;

  async happen(event: PageEvent): Promise<void> {
    for (const one of this.#acts) if (one.event === event) one.act();
    await settled();
  }
}
