/** What ties a component to the values that the server makes of what devices say, as the layout document has it. */
import type { Look } from "./layout.ts";
import { asArray, asChoice, asNumber, asObject, asText, isObject } from "./json.ts";

/** When a state holds: the value is this text, a number from here to there, or not up to date. */
export const stateKinds = ["equal", "range", "stale"] as const;
export type StateKind = (typeof stateKinds)[number];

/** The look of a component while something holds for its value. */
export interface ValueState {
  readonly kind: StateKind;
  readonly equal: string;
  /** Both ends belong to the range. */
  readonly from: number;
  readonly to: number;
  /** Empty fields are those of the look without this state. */
  readonly look: Look;
}

export interface Binding {
  /** Name of the value; empty: none. */
  readonly value: string;
  /** Whether a switch or a slider shows the value, not what was sent last from this browser. */
  readonly follows: boolean;
  /** The value with which a switch that follows is on; with all others it is off. */
  readonly on: string;
  /** The first that holds is shown; one for a stale value before all others. */
  readonly states: readonly ValueState[];
  /** Whether it says so when an interface of its commands has failed. */
  readonly warns: boolean;
}

export const emptyBinding: Binding = { value: "", follows: false, on: "on", states: [], warns: false };

/** Most states of a component. */
export const mostStates = 20;

export function readBinding(value: unknown, readLook: (value: unknown) => Look): Binding | undefined {
  if (!isObject(value)) return undefined;
  return {
    value: asText(value["value"]),
    follows: value["follows"] === true,
    on: asText(value["on"], emptyBinding.on),
    states: asArray(value["states"])
      .slice(0, mostStates)
      .map(asObject)
      .map((one) => ({
        kind: asChoice(one["kind"], stateKinds, "equal"),
        equal: asText(one["equal"]),
        from: asNumber(one["from"], 0, -1e12, 1e12),
        to: asNumber(one["to"], 0, -1e12, 1e12),
        look: readLook(one["look"]),
      })),
    warns: value["warns"] === true,
  };
}
