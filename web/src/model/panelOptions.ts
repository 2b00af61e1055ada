/** What holds for all panels of a project; a part of the layout document. */
import { type Lock, readLock } from "./lock.ts";
import { asNumber, asObject } from "./json.ts";

export interface PanelOptions {
  /** Whether a swipe goes to the page beside the shown one in the bar. */
  readonly swipe: boolean;
  /** After this many seconds without a touch or key a panel goes back to its first page; 0: never. */
  readonly silence: number;
  /** What the author's screens ask for; absent: nothing. */
  readonly lock?: Lock;
}

export const defaultOptions: PanelOptions = { swipe: false, silence: 0 };

export const mostSilence = 86_400;

/** The options in a stored document. What is missing or can't be used is as in a new project. */
export function readOptions(value: unknown): PanelOptions {
  const from = asObject(value);
  const lock = readLock(from["lock"]);
  return {
    swipe: from["swipe"] === true,
    silence: Math.round(asNumber(from["silence"], 0, 0, mostSilence)),
    ...(lock && { lock }),
  };
}

/** The options with this lock, or with none. */
export function withLock({ lock: _, ...options }: PanelOptions, lock: Lock | undefined): PanelOptions {
  return { ...options, ...(lock && { lock }) };
}
