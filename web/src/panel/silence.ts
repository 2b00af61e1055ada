/** Notices that nobody has used the panel for a while. */
import type { Clock, Timer } from "../api/clock.ts";

export class Silence {
  #seconds = 0;
  #timer: Timer | undefined;

  /** @param act  called once after each silence; what returns false is tried again after another one */
  constructor(
    readonly clock: Clock,
    readonly act: () => boolean,
  ) {}

  /** Counts so many seconds from now on; 0: never acts. */
  set(seconds: number): void {
    this.#seconds = seconds;
    this.touch();
  }

  /** Somebody uses the panel: the silence begins anew. */
  touch(): void {
    this.#timer?.cancel();
    this.#timer = this.#seconds ? this.clock.after(this.#seconds * 1000, () => this.act() || this.touch()) : undefined;
  }
}
