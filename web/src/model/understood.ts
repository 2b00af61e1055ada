/** What a rule makes of the traffic of an interface. */
import { bytesToHex } from "./content.ts";
import type { DeviceRule, PatternRule } from "./equipmentConfig.ts";
import { byteArray, bytesOfHex, type Framing, MessageCutter } from "./messageCutter.ts";
import { type Capture, isPattern, type MessagePattern, type PatternProblem, readPattern } from "./messagePattern.ts";
import type { TrafficEntry } from "./traffic.ts";
import { valueOf } from "./valueRule.ts";

export interface Message {
  /** Differs from message to message. */
  readonly key: string;
  /** In ms since the beginning of 1970 (UTC). */
  readonly time: number;
  /** One character for each byte. */
  readonly bytes: string;
}

/** A value that a pattern finds in a message. */
export interface Found {
  readonly pattern: number;
  readonly name: string;
  readonly value: string | number;
}

export interface Understood {
  readonly message: Message;
  /** The pieces in the places of the first pattern that fits; nothing: none fits. */
  readonly captures: readonly Capture[] | undefined;
  readonly found: readonly Found[];
}

/** The messages in what was received, the oldest first; those of each sender are cut for themselves. */
export function messagesIn(entries: readonly TrafficEntry[], framing: Framing): Message[] {
  const messages: Message[] = [];
  const senders = new Map<string, { cutter: MessageCutter; time: number }>();
  for (const { id, isOut, bytes, peer, time, isCut } of entries) {
    if (isOut) continue;
    const sender = senders.get(peer) ?? { cutter: new MessageCutter(framing), time };
    senders.set(peer, sender);
    const isSilent = framing.kind === "silence" && time - sender.time >= framing.ms;
    const ended = isSilent ? sender.cutter.endBySilence() : [];
    ended.push(...sender.cutter.add(Array.from(bytes, (byte) => String.fromCharCode(byte)).join("")));
    sender.time = time;
    if (isCut) senders.delete(peer); // what is missing may have held the end
    messages.push(...ended.map((one, index) => ({ key: `${id} ${index}`, time, bytes: one })));
  }
  if (framing.kind === "silence") {
    for (const [peer, { cutter, time }] of senders) {
      messages.push(...cutter.endBySilence().map((bytes) => ({ key: `${peer} last`, time, bytes })));
    }
  }
  return messages;
}

export type ReadPattern = MessagePattern | PatternProblem;

export function readPatterns({ framing, patterns }: DeviceRule): ReadPattern[] {
  const terminator = framing.kind === "terminator" ? bytesOfHex(framing.hex) : "";
  return patterns.map(({ form, pattern }) => readPattern(form, pattern, terminator));
}

/** All patterns are tried with each message; one gives all of its values or none. */
export function understand(
  message: Message,
  rules: readonly PatternRule[],
  patterns: readonly ReadPattern[],
): Understood {
  let captures: readonly Capture[] | undefined;
  const found: Found[] = [];
  for (const [index, pattern] of patterns.entries()) {
    const fits = isPattern(pattern) ? pattern.match(message.bytes) : undefined;
    const rule = rules[index];
    if (!fits || !rule) continue;
    const values = rule.values.map(({ name, place, ...more }) => {
      const captured = fits.find((one) => one.place === place)?.text;
      return {
        name: name || `{${place}}`,
        value: captured === undefined ? undefined : valueOf({ name, place, ...more }, captured),
      };
    });
    if (values.some(({ value }) => value === undefined)) continue;
    captures ??= fits;
    found.push(...values.map(({ name, value }) => ({ pattern: index, name, value: value! })));
  }
  return { message, captures, found };
}

/** Whether bytes are a text that one can read and mark. */
export function isReadable(bytes: string): boolean {
  return /^[\x20-\x7e]*$/.test(bytes);
}

/**
 * The pattern of messages like this one, with a place where a piece of it was marked.
 * @param begin, end  of the piece, in bytes; the end is behind it
 */
export function patternAround(bytes: string, begin: number, end: number): PatternRule {
  const place = "v1";
  const value = { place, name: "", scale: 1, offset: 0, table: [] };
  if (isReadable(bytes)) {
    const literal = (text: string) => text.replace(/[{}]/g, "$&$&");
    const pattern = `${literal(bytes.slice(0, begin))}{${place}}${literal(bytes.slice(end))}`;
    const isNumber = /^ *[+-]?\d+(\.\d+)? *$/.test(bytes.slice(begin, end));
    return { form: "text", pattern, values: [{ ...value, type: isNumber ? "number" : "text" }] };
  }
  const hex = (text: string) => bytesToHex(byteArray(text));
  const size = end - begin;
  const form = size > 6 ? "*" : String(size);
  const rest = size > 6 ? "" : hex(bytes.slice(end));
  const pattern = [hex(bytes.slice(0, begin)), `{${place}:${form}}`, rest].filter(Boolean).join(" ");
  return { form: "hex", pattern, values: [{ ...value, type: size > 6 ? "text" : "number" }] };
}
