/** The time, as the application sees it. Everything that waits or needs a date gets a clock; a test passes its own. */

export interface Timer {
  /** Cancels the call or calls. No effect afterwards. */
  cancel(): void;
}

export interface Clock {
  /** The date, in ms since the beginning of 1970 (UTC). It can be set. */
  date(): number;
  /** For measuring time spans, in ms; it never goes back. */
  now(): number;
  /** Calls once, after this many ms at the earliest. */
  after(ms: number, act: () => void): Timer;
  /** Calls every this many ms, until it is cancelled. */
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
