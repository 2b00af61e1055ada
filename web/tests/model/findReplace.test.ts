import { describe, expect, it } from "vitest";
import { findHits, type Search, type SearchField, searchFields, withReplaced } from "../../src/model/findReplace.ts";
import { type Command, expandTemplate } from "../../src/model/interactions.ts";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { newComponent } from "../../src/model/layout.ts";
import { type Project, withPages } from "../../src/model/project.ts";
import { command, sampleProject } from "../support/projects.ts";

const interfaces = [1, 2].map((nodeId) => ({
  nodeId,
  controlType: "netPortInfo" as const,
  info: { ...newNetInfo, netPortName: `device ${nodeId}` },
}));
const around = { interfaces, limits: { name: 10, question: 20 } };

const search = (find: string, replacement = "", more: Partial<Search> = {}): Search => ({
  find,
  replacement,
  isCaseSensitive: false,
  fields: new Set(searchFields),
  ...more,
});
const only = (...fields: SearchField[]) => ({ fields: new Set(fields) });

/** The sample with one command of button 1 changed. */
const withCommand = (change: Partial<Command>): Project => ({
  ...sampleProject(),
  interactions: { 1: { triggers: { click: [{ ...command(1), ...change }] } } },
});
const commandIn = (project: Project) => project.interactions[1]!.triggers["click"]![0]!;

describe("found", () => {
  const project = withCommand({ commandName: "Hall on", content: "HALL\r" });
  it.each([
    ["in names, texts and commands", search("hall"), ["pageName", "commandName", "content"]],
    ["with the case", search("Hall", "", { isCaseSensitive: true }), ["pageName", "commandName"]],
    ["in chosen fields", search("hall", "", only("content")), ["content"]],
    ["by interface", search("device 1"), ["interfaceName"]],
    ["as an escape", search("\\r"), ["content"]],
    ["not as a part of an escape", search("r", "", only("content")), []],
    ["nothing by an empty text", search(""), []],
  ])("%s", (_, what, kinds) => {
    expect(findHits(project, what, around).map((hit) => hit.kind)).toEqual(kinds);
  });
});

const faultOf = (project: Project, what: Search) => findHits(project, what, around)[0]?.fault;

it.each([
  ["text", "PWR ON\r", 0, "ON", "OFF", "PWR OFF\r"],
  ["every match", "A-A", 0, "a", "b", "b-b"],
  ["an escape for another", "X\r\n", 0, "\\r\\n", "\\x03", "X\x03"],
  ["a backslash", "a\\r", 0, "\\\\", "/", "a/r"],
  ["bytes", "1B 0d 1B", 1, "1b", "1C", "1C 0d 1C"],
  ["bytes only as a whole", "10 10 01", 1, "01", "02", "10 10 02"],
  ["a byte in the middle of digits", "1001", 1, "01", "02", "1002"],
  ["a byte after its prefix", "0x1B,0x0D", 1, "1B", "1C", "0x1C,0x0D"],
  ["with something longer", "AA", 1, "AA", "AA BB", "AA BB"],
])("replaced in a content: %s", (_, content, contentFormat, find, replacement, expected) => {
  const project = withCommand({ content, contentFormat });
  const hits = findHits(project, search(find, replacement, only("content")), around);
  expect(commandIn(withReplaced(project, hits, around)).content).toBe(expected);
});

it.each([
  ["an odd digit", { content: "1B 0D", contentFormat: 1 }, "0D", "0D0", { kind: "content", fault: "odd", at: 3 }],
  ["no digit", { content: "1B", contentFormat: 1 }, "1B", "ON", { kind: "content", fault: "digit", at: 0 }],
  ["an unknown escape", { content: "ON" }, "ON", "\\q", { kind: "content", fault: "escape", at: 0 }],
  [
    "what the encoding lacks",
    { content: "ON", asciiEncode: 1 },
    "N",
    "开",
    { kind: "content", fault: "character", at: 1 },
  ],
  ["an empty content", { content: "ON" }, "ON", "", { kind: "empty" }],
  ["an unknown interface", { content: "x" }, "device 1", "device 7", { kind: "noInterface" }],
  ["a page without a name", { content: "x" }, "Hall", " ", { kind: "empty" }],
  ["a long name", { content: "x" }, "Hall", "Hall of fame", { kind: "long", most: 10 }],
])("refused: %s", (_, change, find, replacement, fault) => {
  const project = withCommand(change);
  const hits = findHits(project, search(find, replacement), around);
  expect(hits[0]?.fault).toEqual(fault);
  expect(withReplaced(project, hits, around)).toBe(project);
});

it("an interface is replaced by the one of the whole new name", () => {
  const project = withCommand({});
  const hits = findHits(project, search("1", "2", only("interface")), around);
  expect(commandIn(withReplaced(project, hits, around))).toEqual({ ...command(2), content: "ON" });
});

it("only the chosen hits are replaced, and nothing else is touched", () => {
  const project = sampleProject();
  const hits = findHits(project, search("b", "C"), around);
  expect(hits.map((hit) => hit.before)).toEqual(["B1", "B2", "B3"]);
  const next = withReplaced(project, hits.slice(1, 2), around);
  const [first, second, third] = next.layout.pages[0]!.components;
  const before = project.layout.pages[0]!.components;
  expect([first, second!.look.text, third]).toEqual([before[0], "C2", before[2]]);
  expect([first === before[0], next.interactions[1] === project.interactions[1]]).toEqual([true, true]);
});

it("a slider's list is replaced at all its positions, and checked with a position's number", () => {
  const slider = { ...newComponent("slider", 0, 0), id: 9, steps: 3 };
  const page = { ...sampleProject().layout.pages[0]!, components: [slider] };
  const list = [{ ...command(1, "A0 {value}"), contentFormat: 1 }];
  const project = {
    ...withPages(sampleProject(), [page]),
    interactions: { 9: expandTemplate(slider, list) },
  };
  const hits = findHits(project, search("A0", "B0"), around);
  expect([hits.length, faultOf(project, search("A0", "B"))]).toEqual([1, undefined]);
  const { triggers } = withReplaced(project, hits, around).interactions[9]!;
  expect(triggers["position2"]![0]!.content).toBe("B0 64");
});
