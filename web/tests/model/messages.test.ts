/** Cutting, patterns and values as the vector files say. The server's tests read the same files. */
import { expect, it } from "vitest";
import badPatterns from "../../../tests/equipment/vectors/bad_patterns.json" with { type: "json" };
import cutting from "../../../tests/equipment/vectors/cutting.json" with { type: "json" };
import patterns from "../../../tests/equipment/vectors/patterns.json" with { type: "json" };
import values from "../../../tests/equipment/vectors/values.json" with { type: "json" };
import { bytesOfHex, type Framing, MessageCutter } from "../../src/model/messageCutter.ts";
import { isPattern, type PatternForm, readPattern } from "../../src/model/messagePattern.ts";
import { valueOf, type ValueRule } from "../../src/model/valueRule.ts";

/** Digits, with {COUNT*DIGITS} for what is repeated. */
const expanded = (text: string) =>
  bytesOfHex(text.replace(/\{(\d+)\*(\w+)\}/g, (_, count: string, digits: string) => digits.repeat(Number(count))));

it.each(cutting)("cuts: $name", ({ framing, chunks, messages }) => {
  const cutter = new MessageCutter(framing as Framing);
  const found = chunks.map(expanded).flatMap((bytes) => (bytes ? cutter.add(bytes) : cutter.endBySilence()));
  expect(found).toEqual(messages.map(expanded));
});

it.each(
  patterns as {
    name: string;
    form: string;
    pattern: string;
    terminator?: string;
    message: string;
    values: object | null;
  }[],
)("matches: $name", ({ form, pattern, terminator = "", message, values: expected }) => {
  const read = readPattern(form as PatternForm, pattern, bytesOfHex(terminator));
  if (!isPattern(read)) throw new Error(read);
  const captures = read.match(expanded(message));
  const utf8 = (text: string) => Buffer.from(text, "latin1").toString("utf8");
  const named = captures?.filter(({ place }) => place);
  expect(named ? Object.fromEntries(named.map(({ place, text }) => [place, utf8(text)])) : null).toEqual(expected);
});

it.each(badPatterns as { form: string; pattern: string; terminator?: string; problem: string }[])(
  "refuses the $form pattern $pattern: $problem",
  ({ form, pattern, terminator = "", problem }) => {
    expect(readPattern(form as PatternForm, pattern, bytesOfHex(terminator))).toBe(problem);
  },
);

it.each(values)("makes a value: $name", ({ rule, captured, value }) => {
  const whole = { place: "a", name: "n", scale: 1, offset: 0, table: [], ...rule } as ValueRule;
  expect(valueOf(whole, bytesOfHex(captured)) ?? null).toBe(value);
});
