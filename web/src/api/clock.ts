/** The time, as the application sees it. Whatever waits or dates something is given a clock; a test gives its own. */

export interface Timer {
  /** What was to come does not come. Of no effect afterwards. */
  cancel(): void;
}

export interface Clock {
  /** The date, in ms since the beginning of 1970 (UTC). It can be set. */
  date(): number;
  /** For spans between two moments, in ms; it never goes back. */
  now(): number;
  /** Calls once, in so many ms at the earliest. */
  after(ms: number, act: () => void): Timer;
  /** Calls every so many ms, until it is cancelled. */
  every(ms: number, act: () => void): Timer;
}

export const browserClock: Clock = {
  date: () => Date.now(),
  now: () => performance.now(),
  after(ms, act) {
    const id = setTimeout(act, ms);
    return { cancel: () => clearTimeout(id) };
  },
  every(ms, act) {
    const id = setInterval(act, ms);
    return { cancel: () => clearInterval(id) };
  },
};
