import { expect, it } from "vitest";
import { isBound, valueNames } from "../../src/model/binding.ts";
import { type Binding, emptyBinding } from "../../src/model/readBinding.ts";
import { emptyLook, newComponent } from "../../src/model/layout.ts";
import { readComponent } from "../../src/model/readLayout.ts";
import { readValues, standingOf, type Value } from "../../src/model/values.ts";

const state = (kind: "equal" | "range" | "stale", text: string, equal = "", from = 0, to = 0) => ({
  kind,
  equal,
  from,
  to,
  look: { ...emptyLook, text },
});
const states = [
  state("equal", "Ready", "on"),
  state("range", "Warm", "", 40, 60),
  state("range", "Cold", "", 40, -20),
  state("stale", "Who knows"),
];
const value = (said: Value["value"], isStale = false) => new Map([["V", { value: said, isStale }]]);
const lamp = { ...newComponent("lamp", 0, 0), binding: { ...emptyBinding, value: "V", states } };

it.each<[Value["value"], boolean, string | undefined]>([
  ["on", false, "Ready"],
  ["On", false, undefined],
  [40, false, "Warm"],
  ["60", false, "Warm"],
  [60.004, false, undefined],
  [-20, false, "Cold"],
  ["", false, undefined],
  ["on", true, "Who knows"],
  [undefined, true, "Who knows"],
])("the value %j, stale: %s, shows %j", (said, isStale, text) => {
  expect(standingOf(lamp, valueNames(lamp), value(said, isStale)).look?.text).toBe(text);
});

it.each<[string, Value["value"], Partial<ReturnType<typeof standingOf>>]>([
  ["switch", "on", { isOn: true, position: undefined }],
  ["switch", "standby", { isOn: false }],
  ["switch", undefined, { isOn: undefined }],
  ["slider", 20, { position: 1, isOn: undefined }],
  ["slider", "-17", { position: 0 }],
  ["slider", 1e9, { position: 10 }],
  ["slider", "loud", { position: undefined }],
  ["gauge", "21.5", { level: 21.5 }],
  ["gauge", "warm", { level: undefined }],
])("a %s follows %j", (type, said, expected) => {
  const component = readComponent({ id: 1, type, min: 10, max: 110, binding: { value: "V", follows: true } })!;
  expect(standingOf(component, valueNames(component), value(said))).toMatchObject(expected);
});

it("values stand in texts, and what no device has said is a dash", () => {
  const text = readComponent({ id: 1, type: "text", look: { text: "{value Lamp hours} h, {value V}, {value}, {v}" } })!;
  expect([isBound(text), [...valueNames(text)]]).toEqual([true, ["Lamp hours", "V"]]);
  const reply = {
    values: [
      { name: "Lamp hours", value: 1234.5678, time: 5, stale: false },
      { name: "V", value: null, time: null, stale: true },
    ],
    last: 9,
  };
  const { values, last } = readValues(reply);
  const standing = standingOf(text, valueNames(text), values);
  expect([standing.fill(text.look.text), standing.isStale, last]).toEqual(["1234.57 h, –, {value}, {v}", true, 9]);
});

it("a binding is kept as it is stored, and what can't be used of it is replaced", () => {
  const binding: Binding = { value: "V", follows: true, on: "1", states, warns: true };
  expect(readComponent({ id: 1, type: "button", binding })!.binding).toEqual(binding);
  const wrong = { value: 5, follows: "yes", on: null, states: [{ kind: "later", from: "x", look: 7 }], warns: 1 };
  expect(readComponent({ id: 1, type: "button", binding: wrong })!.binding).toEqual({
    ...emptyBinding,
    states: [state("equal", "")],
  });
  expect(readComponent({ id: 1, type: "button", binding: [] })).not.toHaveProperty("binding");
});
