/** The document of what devices are asked, and of what their answers mean; what is not known here stays in it. */
import { asArray, asChoice, asNumber, asObject, asText, type JsonObject } from "./json.ts";
import { type Framing, longestMessage } from "./messageCutter.ts";
import { type PatternForm, patternForms } from "./messagePattern.ts";
import type { ValueRule } from "./valueRule.ts";

export interface Poll {
  readonly content: string;
  /** 0 text, 1 hexadecimal. */
  readonly contentFormat: number;
  readonly asciiEncode: number;
  readonly everyMs: number;
  /** Whether it is asked while nobody looks at a value of the device. */
  readonly always: boolean;
}

export interface PatternRule {
  readonly form: PatternForm;
  readonly pattern: string;
  readonly values: readonly ValueRule[];
}

/** What the device of one interface is asked, and how its answers are understood. */
export interface DeviceRule {
  readonly framing: Framing;
  /** 0: a value never becomes stale by time. */
  readonly staleAfterSeconds: number;
  readonly polls: readonly Poll[];
  readonly patterns: readonly PatternRule[];
}

export const newRule: DeviceRule = {
  framing: { kind: "terminator", hex: "0D" },
  staleAfterSeconds: 30,
  polls: [],
  patterns: [],
};

export const newPoll: Poll = { content: "", contentFormat: 0, asciiEncode: 0, everyMs: 2000, always: false };

/** Bounds of the server's document. */
export const silences = { least: 1, most: 10_000 };
export const pollTimes = { least: 100, most: 86_400_000 };
export const staleTimes = { least: 0, most: 86_400 };

function devicesOf(document: unknown): JsonObject[] {
  return asArray(asObject(document)["devices"]).map(asObject);
}

/** The names of all values in a document. */
export function namesInConfig(document: unknown): string[] {
  return devicesOf(document).flatMap(namesInDevice);
}

/** The names of the values that one device of a document says. */
export function namesInDevice(device: JsonObject): string[] {
  return asArray(device["patterns"])
    .flatMap((pattern) => asArray(asObject(pattern)["values"]))
    .map((value) => asText(asObject(value)["name"]));
}

/** What a document holds for an interface, as it is stored. */
export function deviceIn(document: unknown, nodeId: number): JsonObject | undefined {
  return devicesOf(document).find((one) => one["nodeId"] === nodeId);
}

/** The document with this for an interface; undefined: with nothing for it. */
export function withDevice(document: unknown, nodeId: number, device: JsonObject | undefined): object {
  const devices = devicesOf(document);
  const found = devices.findIndex((one) => one["nodeId"] === nodeId);
  const at = found < 0 ? devices.length : found;
  const next = device ? [{ ...device, nodeId }] : [];
  return {
    version: 1,
    ...asObject(document),
    devices: [...devices.slice(0, at), ...next, ...devices.slice(at + 1)],
  };
}

/** The rule for an interface; a new one where the document has none. */
export function ruleIn(document: unknown, nodeId: number): DeviceRule {
  const device = deviceIn(document, nodeId);
  if (!device) return newRule;
  return {
    framing: readFraming(asObject(device["framing"])),
    staleAfterSeconds: asNumber(
      device["staleAfterSeconds"],
      newRule.staleAfterSeconds,
      staleTimes.least,
      staleTimes.most,
    ),
    polls: asArray(device["polls"]).map(asObject).map(readPoll),
    patterns: asArray(device["patterns"]).map(asObject).map(readPattern),
  };
}

/**
 * The document with this rule for an interface. A rule that asks nothing and understands nothing is left out, and so is a
 * value that has no name yet.
 */
export function withRule(document: unknown, nodeId: number, rule: DeviceRule): object {
  const isEmpty = rule.polls.length === 0 && rule.patterns.length === 0;
  const patterns = rule.patterns.map((one) => ({ ...one, values: one.values.filter(({ name }) => name !== "") }));
  const next = isEmpty ? undefined : { ...deviceIn(document, nodeId), ...rule, patterns };
  return withDevice(document, nodeId, next);
}

function readFraming(from: JsonObject): Framing {
  if (from["kind"] === "length") return { kind: "length", bytes: asNumber(from["bytes"], 1, 1, longestMessage) };
  if (from["kind"] === "silence") {
    return { kind: "silence", ms: asNumber(from["ms"], 50, silences.least, silences.most) };
  }
  return { kind: "terminator", hex: asText(from["hex"], "0D") };
}

function readPoll(from: JsonObject): Poll {
  return {
    content: asText(from["content"]),
    contentFormat: asNumber(from["contentFormat"], 0, 0, 1),
    asciiEncode: asNumber(from["asciiEncode"], 0, 0, 2),
    everyMs: asNumber(from["everyMs"], newPoll.everyMs, pollTimes.least, pollTimes.most),
    always: from["always"] === true,
  };
}

function readPattern(from: JsonObject): PatternRule {
  return {
    form: asChoice(from["form"], patternForms, "text"),
    pattern: asText(from["pattern"]),
    values: asArray(from["values"]).map(asObject).map(readValue),
  };
}

function readValue(from: JsonObject): ValueRule {
  return {
    place: asText(from["place"]),
    name: asText(from["name"]),
    type: asChoice(from["type"], ["text", "number"] as const, "text"),
    scale: asNumber(from["scale"], 1, -1e300, 1e300),
    offset: asNumber(from["offset"], 0, -1e300, 1e300),
    table: asArray(from["table"])
      .map(asObject)
      .map((row) => ({ from: asText(row["from"]), to: asText(row["to"]) })),
  };
}
