/** Reading values of documents that anybody may have written: each function returns the value or the given default. */

export type Json = null | boolean | number | string | Json[] | { [key: string]: Json };
export type JsonObject = Record<string, unknown>;

export function isObject(value: unknown): value is JsonObject {
  return typeof value === "object" && value !== null && !Array.isArray(value);
}

export function asObject(value: unknown): JsonObject {
  return isObject(value) ? value : {};
}

export function asArray(value: unknown): unknown[] {
  return Array.isArray(value) ? value : [];
}

export function asText(value: unknown, otherwise = ""): string {
  return typeof value === "string" ? value : otherwise;
}

export function asNumber(value: unknown, otherwise: number, least: number, most: number): number {
  const number = typeof value === "number" && Number.isFinite(value) ? value : otherwise;
  return Math.min(most, Math.max(least, number));
}

export function asChoice<Choice extends string>(value: unknown, choices: readonly Choice[], otherwise: Choice): Choice {
  return choices.includes(value as Choice) ? (value as Choice) : otherwise;
}

/** Whether two JSON values are the same, whatever the order of their keys; undefined counts as absent. */
export function sameJson(one: unknown, other: unknown): boolean {
  if (one === other) return true;
  if (Array.isArray(one) || Array.isArray(other)) {
    return (
      Array.isArray(one) &&
      Array.isArray(other) &&
      one.length === other.length &&
      one.every((value, index) => sameJson(value, other[index]))
    );
  }
  if (!isObject(one) || !isObject(other)) return false;
  const keys = new Set([...Object.keys(one), ...Object.keys(other)]);
  return [...keys].every((key) => sameJson(one[key], other[key]));
}
