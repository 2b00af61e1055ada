import { describe, expect, it } from "vitest";
import { newComponent } from "../../src/model/layout.ts";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { type Project, withPages } from "../../src/model/project.ts";
import { expandTemplate } from "../../src/model/interactions.ts";
import { commandUses, grouped, usesOfMaterial, withMovedCommands } from "../../src/model/uses.ts";
import { command, sampleProject } from "../support/projects.ts";

const slider = { ...newComponent("slider", 0, 0, "Volume"), id: 9, steps: 3 };
const hall = sampleProject().layout.pages[0]!;
const stage = { ...hall, id: "stage", name: "Stage", material: "m1", components: [slider] };
const project: Project = {
  ...withPages(sampleProject(), [hall, stage]),
  interactions: {
    1: { triggers: { click: [command(1), command(2)], press: [command(1, "of an earlier mode")] } },
    9: expandTemplate(slider, [command(1, "V{value}")]),
    77: { triggers: { click: [command(1)] } },
  },
};
const relay = {
  nodeId: 5,
  controlType: "comInfo",
  info: { comName: "Relay", comPort: "COM1", baudRate: 9600, wordLength: 8, parity: "None", stopBits: 1 },
} as const;

describe("uses", () => {
  it("are the commands that a panel can send, a template once", () => {
    const uses = grouped(commandUses(project), (one) => one.command.portIndex);
    const places = (id: number) => uses.get(id)?.map((one) => [one.page.id, one.component.id, one.trigger, one.index]);
    expect(places(1)).toEqual([
      ["hall", 1, "click", 0],
      ["stage", 9, "", 0],
    ]);
    expect(places(2)).toEqual([["hall", 1, "click", 1]]);
  });

  it("of a material name the page whose background it is", () => {
    expect(usesOfMaterial(project.layout, "m1")).toEqual([{ page: stage }]);
  });
});

describe("moved commands", () => {
  const ports = (one: Project) => commandUses(one).map((use) => [use.page.id, use.command.portIndex]);
  it.each([
    ["all", "", [5, 2, 5]],
    ["those of a page", "stage", [1, 2, 5]],
    ["of a page that is gone", "gone", [1, 2, 1]],
  ])("%s", (_, pageId, expected) => {
    expect(ports(withMovedCommands(project, 1, relay, pageId)).map(([, port]) => port)).toEqual(expected);
  });

  it("name the new interface, at every position of a slider too, and keep their contents", () => {
    const moved = withMovedCommands(project, 1, relay);
    const there = { portIndex: 5, controlType: "comInfo", interfaceName: "Relay" };
    expect(moved.interactions[9]!.triggers["position2"]).toEqual([{ ...command(1, "V100"), ...there }]);
    const back = withMovedCommands(moved, 5, {
      nodeId: 1,
      controlType: "netPortInfo",
      info: { ...newNetInfo, netPortName: "device 1" },
    });
    expect(back).toEqual(project);
  });
});
