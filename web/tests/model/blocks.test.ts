/** An author's own blocks: what is kept of them, and what becomes of them on other ways than saving. */
import { expect, it } from "vitest";
import { newBlock, withBlocks } from "../../src/model/blocks.ts";
import { type Block, blockLimits } from "../../src/model/readBlocks.ts";
import { fittedCommands } from "../../src/model/fitCommands.ts";
import { readInterfaces } from "../../src/model/interfaces.ts";
import type { Layout } from "../../src/model/layout.ts";
import { materialUses } from "../../src/model/materials.ts";
import { emptyProject, type Project } from "../../src/model/project.ts";
import { readWholeLayout, writeLayout } from "../../src/model/wholeLayout.ts";
import { mergeProjects } from "../../src/model/threeWay.ts";
import { imported, readTransfer, type Transfer, writeTransfer } from "../../src/model/transfer.ts";
import { sampleProject } from "../support/projects.ts";

const project = sampleProject();
const { components } = project.layout.pages[0]!;
const device = (nodeId: number, name: string) =>
  readInterfaces({
    configList: [{ nodeId, controlType: "netPortInfo", netPortInfo: { netPortName: name } }],
  });
const block = newBlock(" Power ", components.slice(0, 2), project.interactions, []);
const withThese = (...blocks: Block[]): Project => ({ ...project, layout: withBlocks(project.layout, blocks) });
const stored = (layout: Layout) => JSON.parse(JSON.stringify(writeLayout(layout))) as Record<string, unknown>;
const blocksIn = (document: object) => (readWholeLayout(document) as Layout).blocks;
const names = ({ layout }: Project) => layout.blocks?.map((one) => one.name);

it("begin at the corner, keep their commands, and are the same after saving, export and import", () => {
  expect([block.name, ...block.components.map(({ x, y }) => [x, y])]).toEqual(["Power", [0, 0], [200, 0]]);
  expect(Object.keys(block.interactions)).toEqual(["1"]);
  expect(blocksIn(stored(withThese(block).layout))).toEqual([block]);
  const whole = readTransfer(writeTransfer(withThese(block), [])) as Transfer;
  expect(imported(emptyProject, whole, []).layout.blocks).toEqual([block]);
  const page = readTransfer(writeTransfer(withThese(block), [], project.layout.pages[0])) as Transfer;
  expect([page.project.layout.blocks, imported(withThese(block), page, []).layout.blocks]).toEqual([
    undefined,
    [block],
  ]);
});

const [one] = stored(withThese(block).layout)["blocks"] as { components: object[] }[];
it.each<[string, unknown, number | undefined]>([
  ["no list", "blocks", undefined],
  ["nothing usable", [null, 7, { ...one, id: 3 }, { ...one, components: [{ type: "button", id: -1 }] }], undefined],
  ["one id twice", [one, one], 1],
  [
    "too many",
    Array.from({ length: blockLimits.blocks + 5 }, (_, id) => ({ ...one, id: `b${id}` })),
    blockLimits.blocks,
  ],
])("are read with care: %s", (_, blocks, count) => {
  expect(blocksIn({ ...stored(project.layout), blocks })?.length).toBe(count);
});

it("lose long names and colours that are none when they are read", () => {
  const fill = "red;background:url(//x)";
  const evil = { ...one, name: "n".repeat(500), components: [{ ...one!.components[0], look: { fill } }] };
  const [read] = blocksIn({ ...stored(project.layout), blocks: [evil] })!;
  expect([read!.name.length, read!.components[0]!.look.fill]).toEqual([blockLimits.name, ""]);
});

it("of two authors are joined one by one", () => {
  const other = { ...block, id: "b2", name: "Sound" };
  const third = { ...block, id: "b3", name: "Light" };
  const base = withThese(block, other);
  const mine = withThese({ ...block, name: "Mine" }, other);
  const merged = mergeProjects(base, mine, withThese(block, third));
  expect([names(merged.project), merged.clashes]).toEqual([["Mine", "Light"], []]);
  expect(mergeProjects(base, mine, withThese({ ...block, name: "Theirs" }, other)).clashes.length).toBe(1);
});

it("give their commands to the present interface of the name, or to nobody", () => {
  const saved = newBlock("Power", components, project.interactions, device(1, "projector"));
  const node = (here: ReturnType<typeof device>) =>
    fittedCommands(saved.interactions, here)[1]!.triggers["click"]![0]!.portIndex;
  expect([node(device(8, "projector")), node(device(1, "screen"))]).toEqual([8, -1]);
});

it("count as uses of their materials", () => {
  const shown = { ...block, components: [{ ...components[0]!, look: { ...components[0]!.look, material: "m1" } }] };
  expect(materialUses(withThese(shown).layout).get("m1")).toBe(1);
});
