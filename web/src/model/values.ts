/** Values that devices say, and what they make of a component. */
import { withValues } from "./binding.ts";
import type { Binding, ValueState } from "./readBinding.ts";
import { gaugeShare } from "./gauge.ts";
import type { Component, Look } from "./layout.ts";
import { asArray, asNumber, asObject, asText } from "./json.ts";

export interface Value {
  /** What the device said last; nothing: it has said nothing yet. */
  readonly value: string | number | undefined;
  /** Whether the device may be in another state by now. */
  readonly isStale: boolean;
}

export type Values = ReadonlyMap<string, Value>;

/** Of what no device has said. */
export const unknown: Value = { value: undefined, isStale: true };

/** Stands for a value that no device has said. */
const nothing = "–";

export interface ReadValues {
  readonly values: Values;
  /** The number for the next request. */
  readonly last: number;
}

/** Of a reply of the server. */
export function readValues(reply: unknown): ReadValues {
  const { values, last } = asObject(reply);
  const read = new Map<string, Value>();
  for (const one of asArray(values).map(asObject)) {
    const { name, value } = one;
    const isSaid = typeof value === "string" || typeof value === "number";
    read.set(asText(name), { value: isSaid ? value : undefined, isStale: one["stale"] !== false });
  }
  return { values: read, last: asNumber(last, 0, 0, Number.MAX_SAFE_INTEGER) };
}

/** A number with at most two digits behind the point, a text as it is. */
export function valueText(value: Value["value"]): string {
  return typeof value === "number" ? String(Math.round(value * 100) / 100) : (value ?? nothing);
}

function numberOf(value: Value["value"]): number | undefined {
  const number = typeof value === "string" && value.trim() !== "" ? Number(value) : value;
  return typeof number === "number" && Number.isFinite(number) ? number : undefined;
}

function holds(state: ValueState, { value, isStale }: Value): boolean {
  if (state.kind === "stale") return isStale;
  if (state.kind === "equal") return value !== undefined && valueText(value) === state.equal;
  const number = numberOf(value);
  return number !== undefined && number >= Math.min(state.from, state.to) && number <= Math.max(state.from, state.to);
}

/** The state that a value chooses, if any. */
export function stateOf({ states }: Binding, value: Value): ValueState | undefined {
  const held = states.filter((one) => holds(one, value));
  return held.find((one) => one.kind === "stale") ?? held[0];
}

/** How a component stands by the values. */
export interface Standing {
  /** The look of a state, whose empty fields are those of the usual look; nothing: no state holds. */
  readonly look: Look | undefined;
  /** Of a switch that follows: whether it is on. */
  readonly isOn: boolean | undefined;
  /** Of a slider that follows. */
  readonly position: number | undefined;
  /** Of a gauge: its number. */
  readonly level: number | undefined;
  /** Whether a value that it shows may be wrong by now. */
  readonly isStale: boolean;
  /** A text with the values in the places that name them. */
  readonly fill: (text: string) => string;
}

export function standingOf(component: Component, names: ReadonlySet<string>, values: Values): Standing {
  const { binding } = component;
  const of = (name: string) => values.get(name) ?? unknown;
  const value = binding?.value ? of(binding.value) : undefined;
  const number = numberOf(value?.value);
  const follows = binding?.follows && value?.value !== undefined;
  return {
    look: binding && value && stateOf(binding, value)?.look,
    isOn: component.type === "switch" && follows ? valueText(value.value) === binding.on : undefined,
    position:
      component.type === "slider" && follows && number !== undefined
        ? Math.round(gaugeShare(component, number) * (component.steps - 1))
        : undefined,
    level: component.type === "gauge" ? number : undefined,
    isStale: [...names].some((name) => of(name).isStale),
    fill: (text) => withValues(text, (name) => valueText(of(name).value)),
  };
}
