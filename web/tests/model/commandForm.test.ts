import { expect, it } from "vitest";
import { keepChoice, nameOfContent, newFields } from "../../src/author/commands/commandForm.ts";
import { splitAddress } from "../../src/model/interfaces.ts";

it.each([
  [null, { isText: true, terminator: "", asciiEncode: 0 }],
  ["{", { isText: true, terminator: "", asciiEncode: 0 }],
  ['{"isText":1,"terminator":"x","asciiEncode":9}', { isText: true, terminator: "", asciiEncode: 0 }],
  ["kept", { isText: false, terminator: "\r\n", asciiEncode: 2 }],
])("begins a command with what was chosen last: %s", (stored, fields) => {
  const kept = new Map<string, string>();
  const storage = {
    getItem: (key: string) => (stored === "kept" ? (kept.get(key) ?? null) : stored),
    setItem: (key: string, value: string) => void kept.set(key, value),
  };
  keepChoice(storage, { isText: false, notation: "01", terminator: "\r\n", asciiEncode: 2 });
  expect(newFields(storage)).toEqual({ ...fields, notation: "" });
});

it.each([
  [" PWR\n ON ", "PWR ON"],
  ["X".repeat(41), `${"X".repeat(39)}…`],
])("names a command by its content %j", (notation, name) =>
  expect(nameOfContent({ isText: true, notation, terminator: "", asciiEncode: 0 })).toBe(name),
);

it.each([
  ["10.0.0.7:4352", { address: "10.0.0.7", port: 4352 }],
  ["[fe80::1]:80", { address: "fe80::1", port: 80 }],
  ["fe80::1", undefined],
  ["10.0.0.7", undefined],
])("splits %s", (text, parts) => expect(splitAddress(text)).toEqual(parts));
