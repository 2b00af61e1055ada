import type { Clock, Timer } from "../../src/api/clock.ts";
import { settled } from "./settled.ts";

interface Entry {
  at: number;
  act: () => void;
  every: number;
}

/** A clock that stops until a test lets time pass. */
export class FakeClock implements Clock {
  /** The time at which the clock starts; an odd date, so that none is right by chance. */
  static readonly start = Date.UTC(2031, 4, 6, 7, 8, 9);
  #now = 5000;
  readonly #entries = new Set<Entry>();

  date(): number {
    return FakeClock.start + this.#now - 5000;
  }

  now(): number {
    return this.#now;
  }

  after(ms: number, act: () => void): Timer {
    return this.#add({ at: this.#now + ms, act, every: 0 });
  }

  every(ms: number, act: () => void): Timer {
    return this.#add({ at: this.#now + ms, act, every: ms });
  }

  /** Time goes on. What becomes due on the way happens at its time, and all that follows of it before the next. */
  async pass(ms: number): Promise<void> {
    const end = this.#now + ms;
    for (;;) {
      await settled();
      const [next] = [...this.#entries].filter((one) => one.at <= end).sort((one, other) => one.at - other.at);
      if (!next) break;
      this.#now = next.at;
      if (next.every) next.at += next.every;
      else this.#entries.delete(next);
      next.act();
    }
    this.#now = end;
  }

  #add(entry: Entry): Timer {
    this.#entries.add(entry);
    return { cancel: () => void this.#entries.delete(entry) };
  }
}
