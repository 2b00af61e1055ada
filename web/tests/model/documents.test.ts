import { describe, expect, it } from "vitest";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { authorEn } from "../../src/i18n/author.en.ts";
import { authorZh } from "../../src/i18n/author.zh.ts";
import { panelEn } from "../../src/i18n/panel.en.ts";
import { panelZh } from "../../src/i18n/panel.zh.ts";
import { type Command, expandTemplate, readInteractions, writeInteractions } from "../../src/model/interactions.ts";
import {
  checkNetInfo,
  checkSerialInfo,
  newNetInfo,
  newSerialInfo,
  readInterfaces,
} from "../../src/model/interfaces.ts";
import { type Component, emptyLayout, newComponent, newPage } from "../../src/model/layout.ts";
import { readMaterials } from "../../src/model/materials.ts";
import { pageToShow } from "../../src/model/navigation.ts";
import { findProblems } from "../../src/model/problems.ts";
import { emptyProject, type Project, writeProject } from "../../src/model/project.ts";
import { isRefused, readLayout } from "../../src/model/readLayout.ts";
import { writeLayout } from "../../src/model/wholeLayout.ts";
import {
  imported,
  missingInterfaces,
  readTransfer,
  type Transfer,
  withImportedDevices,
  writeTransfer,
} from "../../src/model/transfer.ts";
import { command } from "../support/projects.ts";

const transfer = readTransfer(JSON.stringify(sample)) as Transfer;
const { project } = transfer;
const here = transfer.interfaces;
const ids = new Set(here.map((one) => one.nodeId));
const first = project.layout.pages[0]!;

describe("the layout document", () => {
  it("comes back from what was written", () => {
    expect(readLayout(JSON.parse(JSON.stringify(writeLayout(project.layout))))).toEqual(project.layout);
  });

  it.each([
    ["nothing stored", undefined, emptyLayout],
    ["no object", "text", { refused: "foreign" }],
  ])("%s", (_, value, expected) => {
    expect(readLayout(value)).toEqual(expected);
  });

  it("shows the wanted page, else the start page, else the first", () => {
    const layout = { ...project.layout, startPage: "p-sources" };
    expect(["p-hall", "gone"].map((id) => pageToShow(layout, id)?.id)).toEqual(["p-hall", "p-sources"]);
  });
});

describe("the interactions document", () => {
  it("has the form that the server reads", () => {
    const document = writeProject(project).interactions;
    expect(readInteractions(document)).toEqual(project.interactions);
    const net = { portIndex: 1, controlType: "netPortInfo", netPortInfo: { content: "%1POWR 1\r" } };
    const commandArr = [
      { ...net, commandName: "Power on", contentFormat: 0, asciiEncode: 0 },
      { portIndex: 3, controlType: "comInfo", comInfo: { content: "A0 01 01 A2" } },
    ];
    const componentArr = [
      { componentId: 102, interactionArr: [{ triggerType: "click", commandArr }] },
      {},
      {},
      {},
      {},
      {},
    ];
    expect(document).toMatchObject({ componentInteractionInfo: { componentArr } });
  });

  it("leaves out commands of components and triggers that are gone", () => {
    const button: Component = { ...newComponent("button", 0, 0), id: 5, mode: "press" };
    const list = project.interactions[102]!.triggers["click"]!;
    const document = writeInteractions(
      { 5: { triggers: { click: list, press: list } }, 6: { triggers: { click: list } } },
      [button],
    );
    expect(Object.keys(readInteractions(document))).toEqual(["5"]);
    expect(Object.keys(readInteractions(document)[5]!.triggers)).toEqual(["press"]);
  });

  it.each([
    ["V{value}\r", 0, ["V0\r", "V50\r", "V100\r"]],
    ["V{value:3}", 0, ["V000", "V050", "V100"]],
    ["A0 {value}", 1, ["A0 00", "A0 32", "A0 64"]],
  ])("expands %j for each position", (content, contentFormat, expected) => {
    const slider = { ...newComponent("slider", 0, 0), steps: 3 };
    const { triggers } = expandTemplate(slider, [{ ...command(1, content), contentFormat }]);
    expect(Object.values(triggers).map((list) => list[0]!.content)).toEqual(expected);
  });
});

it("reads materials that are pictures, and nothing else", () => {
  const good = { id: "m1", name: "Logo", data: "data:image/png;base64,AAAA" };
  const bad = { id: "m2", name: "Page", data: "data:text/html;base64,AAAA" };
  expect(readMaterials({ version: 1, materialList: [good, bad, { ...good, name: "again" }] })).toMatchObject([
    { id: "m1", name: "Logo", size: 3 },
  ]);
  expect(readMaterials({ version: 2, materialList: [] })).toEqual({ refused: "newer", version: 2 });
  expect(readMaterials({ materialList: [{ id: 1 }] })).toEqual({ refused: "foreign" });
});

describe("interfaces", () => {
  it.each([
    [{ ...newNetInfo, netPortName: "A", dstIpAddress: "10.0.0.7" }, {}],
    [
      { ...newNetInfo, dstIpAddress: "10.0.0.7/24", dstPort: 0 },
      { netPortName: "empty", dstPort: "port", dstIpAddress: "address" },
    ],
    [{ ...newNetInfo, netPortName: "A", dstIpAddress: "10.0.0.7:4352" }, { dstIpAddress: "addressPort" }],
    [{ ...newNetInfo, netPortName: "A", dstIpAddress: "[fe80::1]:80" }, { dstIpAddress: "addressPort" }],
    [{ ...newNetInfo, netPortName: "A", dstIpAddress: "fe80::1", ipAddress: "::" }, {}],
    [{ ...newNetInfo, netPortName: "A", netMode: "TCP_Server" as const }, { port: "port" }],
    [{ ...newNetInfo, netPortName: "A", netMode: "TCP_Server" as const, port: 5000 }, {}],
  ])("checks %j", (info, faults) => expect(checkNetInfo(info)).toEqual(faults));

  it.each([
    [8, 1, {}],
    [8, 1.5, { stopBits: "stopBits" }],
    [5, 1.5, {}],
    [5, 2, { stopBits: "stopBits" }],
    [7, 2, {}],
  ])("checks %i data and %d stop bits", (wordLength, stopBits, faults) => {
    expect(checkSerialInfo({ ...newSerialInfo, comName: "A", comPort: "COM1", wordLength, stopBits })).toEqual(faults);
  });
});

describe("problems", () => {
  const kinds = (component: Component, interactions: Project["interactions"]) => {
    const page = { ...newPage("P"), components: [{ ...component, id: 1 }] };
    return findProblems({ ...emptyProject, layout: { ...emptyLayout, pages: [page] }, interactions }, ids).map(
      (one) => one.kind,
    );
  };
  const button = newComponent("button", 10, 10);
  const image = newComponent("image", 10, 10);
  const click = (command: Partial<Command>) => ({
    1: { triggers: { click: [{ ...project.interactions[102]!.triggers["click"]![0]!, ...command }] } },
  });
  it.each([
    ["no command", button, {}, ["noCommand"]],
    ["nothing wrong", button, click({}), []],
    ["a deleted interface", button, click({ portIndex: 99 }), ["lostInterface"]],
    ["content without bytes", button, click({ content: "1B0", contentFormat: 1 }), ["badContent"]],
    ["outside and small", { ...button, x: 5000, width: 20 }, click({}), ["outside", "small"]],
    ["a lost picture", { ...image, look: { ...image.look, material: "gone" } }, {}, ["lostMaterial"]],
    [
      "a lost picture of the pressed look",
      { ...button, activeLook: { ...button.look, material: "gone" } },
      click({}),
      ["lostMaterial"],
    ],
    ["a link to nowhere", { ...newComponent("link", 10, 10), target: "gone" }, {}, ["lostPage"]],
  ])("%s", (_, component, interactions, expected) => expect(kinds(component, interactions)).toEqual(expected));

  it("finds none in the sample", () => expect(findProblems(project, ids)).toEqual([]));
});

describe("files", () => {
  it("bring a page to another server: commands go to the interfaces of the same names", () => {
    const file = readTransfer(writeTransfer(project, here, first)) as Transfer;
    expect([file.scope, file.project.layout.pages.length, file.interfaces.length]).toEqual(["page", 1, 3]);
    const there = readInterfaces({ configList: [{ ...sample.interfaces[0], nodeId: 40 }] });
    expect(missingInterfaces(file, there).map((one) => one.nodeId)).toEqual([2, 3]);
    const result = imported(emptyProject, file, there);
    const on = result.layout.pages[0]!.components.find((one) => one.look.text === "On")!;
    expect(result.interactions[on.id]!.triggers["click"]!.map((one) => one.portIndex)).toEqual([40, -3]);
  });

  it("bring what devices are asked; a page leaves alone what is asked here already", () => {
    const asked = { version: 1, devices: [{ nodeId: 1, ...transfer.devices.get("Projector") }] };
    const there = readInterfaces({ configList: [{ ...sample.interfaces[0], nodeId: 40 }] });
    const other = { version: 1, more: true, devices: [{ nodeId: 7 }, { nodeId: 40, polls: [] }] };
    const own = { ...asked.devices[0], nodeId: 40 };
    const bare = readTransfer(writeTransfer(project, here, newPage("Bare"), asked)) as Transfer;
    expect(bare.interfaces).toEqual([]);
    const page = readTransfer(writeTransfer({ ...project, interactions: {} }, here, first, asked)) as Transfer;
    expect(page.interfaces.map((one) => one.nodeId)).toEqual([1]); // for what it shows alone
    expect(withImportedDevices(page, other, there)).toBe(other);
    expect(withImportedDevices(page, undefined, there)).toEqual({ version: 1, devices: [own] });
    expect(withImportedDevices(transfer, other, there)).toEqual({ ...other, devices: [{ nodeId: 7 }, own] });
  });

  it.each([
    ["{", "foreign"],
    ["[]", "foreign"],
    ['{"form":"control project","version":9}', "newer"],
  ])("refuse %s", (text, refused) => {
    const read = readTransfer(text);
    expect(isRefused(read) && read.refused).toBe(refused);
  });
});

it("no sentence of a screen hides that of another under the same key", () => {
  const screens = import.meta.glob<Record<string, object>>("../../src/i18n/author/*.en.ts", { eager: true });
  const keys = Object.values(screens).flatMap((file) => Object.values(file).flatMap((texts) => Object.keys(texts)));
  expect(keys.filter((key, index) => keys.indexOf(key) !== index)).toEqual([]);
  expect(new Set(keys)).toEqual(new Set(Object.keys(authorEn)));
});

it.each([
  ["panel", panelEn, panelZh],
  ["author", authorEn, authorZh],
])("the dictionaries of the %s have the same places for values", (_, en, zh) => {
  const places = (texts: Record<string, string>) =>
    Object.fromEntries(
      Object.entries(texts).map(([key, text]) => [key, [...text.matchAll(/\{\d\}/g)].map(String).sort()]),
    );
  expect(places(zh)).toEqual(places(en));
});
