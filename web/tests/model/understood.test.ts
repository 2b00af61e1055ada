import { expect, it } from "vitest";
import { type DeviceRule, namesInConfig, newRule, ruleIn, withRule } from "../../src/model/equipmentConfig.ts";
import { type Framing } from "../../src/model/messageCutter.ts";
import { readTraffic } from "../../src/model/traffic.ts";
import { messagesIn, patternAround, readPatterns, understand } from "../../src/model/understood.ts";

const line: Framing = { kind: "terminator", hex: "0D" };
const silence: Framing = { kind: "silence", ms: 50 };

/** What was received, as digits, with the number of its sender and its time. */
const received = (...list: [hex: string, sender: number, time: number, more?: object][]) =>
  readTraffic({
    entries: list.map(([hex, sender, time, more], index) => ({
      id: index + 1,
      time,
      hex,
      peer: `d${sender}`,
      ...more,
    })),
  }).entries;

it.each<[string, Framing, ReturnType<typeof received>, string[]]>([
  ["in pieces", line, received(["41", 1, 0], ["420D43", 1, 1], ["0D", 1, 2]), ["AB", "C"]],
  ["of two senders", line, received(["41", 1, 0], ["42", 2, 1], ["0D", 1, 2], ["0D", 2, 3]), ["A", "B"]],
  ["but not what was sent", line, received(["410D", 1, 0, { out: true }], ["420D", 1, 1]), ["B"]],
  ["but not across missing bytes", line, received(["41", 1, 0, { cut: true }], ["420D", 1, 1]), ["B"]],
  ["by silence", silence, received(["41", 1, 0], ["42", 1, 40], ["43", 1, 95]), ["AB", "C"]],
])("cuts messages from the traffic, %s", (_, framing, entries, expected) => {
  expect(messagesIn(entries, framing).map((one) => one.bytes)).toEqual(expected);
});

it.each([
  ["POWR=1", 5, 6, { form: "text", pattern: "POWR={v1}" }, 1],
  ["T={21 C}", 3, 5, { form: "text", pattern: "T={{{v1} C}}" }, 21],
  ["IN HDMI;", 3, 7, { form: "text", pattern: "IN {v1};" }, "HDMI"],
  ["\xa5\x01\x02\x03", 1, 3, { form: "hex", pattern: "A5 {v1:2} 03" }, 258],
  ["\xa5\x01\x02\x03\x04\x05\x06\x07", 1, 8, { form: "hex", pattern: "A5 {v1:*}" }, "01020304050607"],
])("makes a pattern of the message %j by a marked piece", (bytes, begin, end, expected, value) => {
  const pattern = patternAround(bytes, begin, end);
  expect(pattern).toMatchObject(expected);
  const rule: DeviceRule = { ...newRule, patterns: [pattern] };
  const message = { key: "1", time: 0, bytes };
  expect(understand(message, rule.patterns, readPatterns(rule)).found).toEqual([{ pattern: 0, name: "{v1}", value }]);
});

it("changes the rule of one interface, and nothing else of the document", () => {
  const other = { nodeId: 2, framing: { kind: "length", bytes: 4 }, note: "kept" };
  const document = { version: 1, comment: "kept", devices: [other, { nodeId: 1, framing: line, own: 5 }] };
  const value = { place: "v1", name: "Power", type: "text" as const, scale: 1, offset: 0, table: [] };
  const unnamed = { ...value, place: "v2", name: "" };
  const rule = { ...newRule, patterns: [{ form: "text" as const, pattern: "{v1} {v2}", values: [value, unnamed] }] };
  const changed = withRule(document, 1, rule);
  expect(changed).toMatchObject({ comment: "kept", devices: [other, { nodeId: 1, own: 5 }] });
  expect(namesInConfig(changed)).toEqual(["Power"]);
  expect(ruleIn(changed, 1).patterns[0]!.values).toEqual([value]);
  expect(withRule(changed, 1, newRule)).toMatchObject({ devices: [other] });
  expect(ruleIn(undefined, 1)).toBe(newRule);
});
