import { expect, it } from "vitest";
import { newComponent, newPage, type Page } from "../../src/model/layout.ts";
import { readInterfaces } from "../../src/model/interfaces.ts";
import { emptyProject, type Project, withCommands, withPages } from "../../src/model/project.ts";
import { byDay, lostInterfaces, materialDifferences, pageDifferences, readVersions } from "../../src/model/versions.ts";
import { command } from "../support/projects.ts";

const page = (id: string, ...partIds: number[]): Page => ({
  ...newPage(id),
  id,
  components: partIds.map((part) => ({ ...newComponent("button", 0, 0), id: part })),
});
const told = (then: Project, now: Project) =>
  pageDifferences(then, now).map(({ page: { name }, kind, components }) => [
    name,
    kind,
    ...components.map(({ id }) => id),
  ]);

it("what restoring changes is told by page and component", () => {
  const now = withPages(emptyProject, [page("hall", 1, 2), page("bar", 3), page("same", 4)]);
  const hall = page("hall", 1, 5);
  const moved = { ...hall, components: hall.components.map((one) => (one.id === 1 ? { ...one, x: 9 } : one)) };
  const then = withPages(emptyProject, [page("foyer"), moved, page("same", 4)]);
  expect(told(then, now)).toEqual([
    ["foyer", "returns"],
    ["hall", "changes", 1, 5, 2],
    ["bar", "goes"],
  ]);
  expect(told(now, now)).toEqual([]);
  expect(told(withCommands(now, 4, { triggers: { click: [command(1)] } }), now)).toEqual([["same", "changes", 4]]);
  const material = { id: "m", name: "logo", width: 1, height: 1, size: 1, data: "" };
  expect(materialDifferences({ ...now, materials: [material] }, now)).toEqual(["logo"]);
});

it.each([
  ["the same", [3, "Matrix", 1], [[3, "Matrix", 1]], false],
  ["another address", [3, "Matrix", 1], [[3, "Matrix", 2]], false],
  ["another name", [3, "Matrix", 1], [[3, "Switcher", 1]], false],
  ["other equipment", [3, "Matrix", 1], [[3, "Pump", 2]], true],
  ["added again", [3, "Matrix", 1], [[5, "Matrix", 9]], false],
  [
    "two of the name",
    [3, "Matrix", 1],
    [
      [4, "Matrix", 1],
      [5, "Matrix", 2],
    ],
    true,
  ],
  ["none", [3, "Matrix", 1], [], true],
] as const)("an interface of then and those of now: %s", (_, then, now, isLost) => {
  const read = (rows: readonly (readonly [number, string, number])[]) =>
    readInterfaces({
      configList: rows.map(([nodeId, netPortName, dstPort]) => ({
        nodeId,
        controlType: "netPortInfo",
        netPortInfo: { netPortName, dstPort },
      })),
    });
  expect(lostInterfaces(read([then]), read(now)).length).toBe(isLost ? 1 : 0);
});

it("the list comes by days", () => {
  const list = readVersions({
    versions: ["2026-11-22T09:00:00", "2026-11-21T10:00:00", "2026-11-21T09:00:00"].map((time) => ({ id: time, time })),
  });
  expect(byDay(list).map(({ day, versions }) => [day, versions.length])).toEqual([
    ["2026-11-22", 1],
    ["2026-11-21", 2],
  ]);
  expect(readVersions(7)).toEqual([]);
});
