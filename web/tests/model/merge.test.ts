/** What becomes of the work of two authors who began with the same project. */
import { describe, expect, it } from "vitest";
import { readInteractions } from "../../src/model/interactions.ts";
import { newComponent, newPage, type Page } from "../../src/model/layout.ts";
import { isChanged, withCopies, withKnownCommands } from "../../src/model/merge.ts";
import {
  type Project,
  withCommands,
  withComponents,
  withPage,
  withPages,
  writeProject,
} from "../../src/model/project.ts";
import { changedOnPhone } from "../../src/model/phoneEdit.ts";
import { mergeProjects, type Side } from "../../src/model/threeWay.ts";
import { command, renamed, sampleProject } from "../support/projects.ts";

const hall = sampleProject();
const lobby = { ...newPage("Lobby"), id: "lobby", components: [{ ...newComponent("link", 0, 0), id: 9 }] };
const places = Object.fromEntries(
  [1, 2, 3].map((id) => [id, { x: 10, y: 60 * id, width: 90, height: 50, fontSize: 20, isHidden: false }]),
);
const phone = { width: 390, height: 700, places };
const base = withPages(hall, [...hall.layout.pages.map((page) => ({ ...page, phone })), lobby]);
const ids = new Set([1]);

type Change = (project: Project) => Project;
const put =
  (id: number, x: number): Change =>
  (project) =>
    withPage(project, "hall", (page) => withComponents(page, new Set([id]), (one) => ({ ...one, x })));
const putOnPhone =
  (id: number, x: number): Change =>
  (project) =>
    withPage(project, "hall", (page) =>
      changedOnPhone(page, (shown) => withComponents(shown, new Set([id]), (one) => ({ ...one, x }))),
    );
const addPhone =
  (width: number): Change =>
  (project) =>
    withPage(project, "lobby", (page) => ({
      ...page,
      phone: { ...phone, width, places: { 9: { ...places[1]!, x: width } } },
    }));
const send =
  (id: number, content: string): Change =>
  (project) =>
    withCommands(project, id, { triggers: { click: [command(1, content)] } });
const add =
  (id: number): Change =>
  (project) =>
    withPage(project, "hall", (page) => ({
      ...page,
      components: [...page.components, { ...newComponent("text", 0, 0), id }],
    }));
const order =
  (...wanted: number[]): Change =>
  (project) =>
    withPage(project, "hall", (page) => ({
      ...page,
      components: wanted.map((id) => page.components.find((one) => one.id === id)!),
    }));
const rename =
  (name: string): Change =>
  (project) =>
    withPage(project, "hall", (page) => ({ ...page, name }));
const widen: Change = (project) => withPage(project, "hall", (page) => ({ ...page, width: 1400 }));
const without =
  (pageId: string): Change =>
  (project) =>
    withPages(
      project,
      project.layout.pages.filter((page) => page.id !== pageId),
    );
const start: Change = (project) => ({ ...project, layout: { ...project.layout, startPage: "lobby" } });
const material =
  (name: string): Change =>
  (project) => ({ ...project, materials: [{ id: "m1", name, width: 1, height: 1, size: 1, data: "data:image/png," }] });

const clashesOf = (mine: Project, theirs: Project) => mergeProjects(base, mine, theirs).clashes.map((one) => one.key);

describe("what doesn't touch", () => {
  const changes: [string, Change][] = [
    ["a component's place", put(1, 5)],
    ["another one's", put(2, 5)],
    ["its place on phones", putOnPhone(1, 5)],
    ["another one's", putOnPhone(2, 5)],
    ["its commands", send(1, "OFF")],
    ["commands of another one", send(3, "OFF")],
    ["a page's name", rename("Mine")],
    ["its width", widen],
    ["a deleted page", without("lobby")],
    ["the start page", start],
    ["a material", material("Logo")],
  ];
  it.each(changes)("is joined, in either order: %s", (_name, change) => {
    for (const [, other] of changes.filter((one) => one[1] !== change)) {
      const both = mergeProjects(base, change(base), other(base));
      expect(both.clashes).toEqual([]);
      expect(both.project).toEqual(other(change(base)));
    }
  });

  it("leaves one side as it is when the other has changed nothing", () => {
    const changed = changes.reduce((project, [, change]) => change(project), base);
    expect(mergeProjects(base, changed, base).project).toEqual(changed);
    expect(mergeProjects(base, base, changed).project).toBe(changed);
    expect(mergeProjects(base, changed, structuredClone(changed))).toEqual({ project: changed, clashes: [] });
  });

  it.each<[string, Change, Change, number[]]>([
    ["new ones of both", add(4), add(5), [1, 2, 3, 4, 5]],
    ["my order and a new one of theirs", order(3, 1, 2), add(4), [3, 4, 1, 2]],
    ["their order and a new one of mine", add(4), order(3, 1, 2), [3, 4, 1, 2]],
    ["one that I have deleted", order(1, 3), add(4), [1, 3, 4]],
    ["both orders: mine", order(3, 2, 1), order(2, 1, 3), [3, 2, 1]],
  ])("keeps an order: %s", (_name, mine, theirs, expected) => {
    const [page] = mergeProjects(base, mine(base), theirs(base)).project.layout.pages;
    expect(page!.components.map((one) => one.id)).toEqual(expected);
  });
});

describe("what both have changed", () => {
  it.each<[string, Change, Change, string]>([
    ["a place", put(1, 5), put(1, 6), "component/hall/1/"],
    ["a place on phones", putOnPhone(1, 5), putOnPhone(1, 6), "component/hall/1/"],
    ["a component deleted and put elsewhere on phones", order(2, 3), putOnPhone(1, 6), "component/hall/1/"],
    ["a layout for phones", addPhone(360), addPhone(400), "page/lobby/0/"],
    ["commands", send(1, "A"), send(1, "B"), "component/hall/1/"],
    ["a deleted component", order(2, 3), put(1, 6), "component/hall/1/"],
    [
      "a component of which they delete the commands",
      send(1, "A"),
      (one) => withCommands(one, 1, { triggers: {} }),
      "component/hall/1/",
    ],
    ["a name", rename("A"), rename("B"), "page/hall/0/"],
    ["a deleted page", without("hall"), send(3, "OFF"), "page/hall/0/"],
    ["the start page", start, (one) => ({ ...one, layout: { ...one.layout, startPage: "hall" } }), "project//0/"],
    ["a material", material("A"), material("B"), "material//0/m1"],
  ])("is for the author to choose: %s", (_name, mine, theirs, key) => {
    const [own, others] = [mine(base), theirs(base)];
    expect([clashesOf(own, others), clashesOf(others, own)]).toEqual([[key], [key]]);
    const chosen = (side: Side) => mergeProjects(base, own, others, new Map([[key, side]])).project;
    expect(writeProject(chosen("mine"))).toEqual(writeProject(own));
    expect(writeProject(chosen("theirs"))).toEqual(writeProject(others));
  });
});

describe("what somebody has stored", () => {
  it("is no change when I have made the same", () => {
    expect(isChanged(base, rename("A")(base), rename("A")(base), ids)).toBe(false);
  });

  it("lacks the commands of a deleted interface, and that is no change", () => {
    const stored = { ...base, interactions: readInteractions({}) };
    expect([isChanged(base, stored, base, new Set()), isChanged(base, stored, base, ids)]).toEqual([false, true]);
    expect(withKnownCommands(stored, [base], new Set()).interactions).toEqual(base.interactions);
    expect(withKnownCommands(stored, [base], ids).interactions).toEqual({});
  });

  it("gets copies of my pages, with their commands and the links between them", () => {
    const link = { ...newComponent("link", 0, 0), id: 8, target: "lobby" };
    const linked = withPage(base, "hall", (page): Page => ({ ...page, components: [...page.components, link] }));
    const { layout, interactions } = withCopies(
      renamed(base, "Theirs"),
      linked,
      new Set(["hall", "lobby"]),
      (page) => `${page.name} (mine)`,
    );
    expect(layout.pages.map((page) => page.name)).toEqual(["Theirs", "Theirs", "Hall (mine)", "Lobby (mine)"]);
    const [copy, other] = layout.pages.slice(2);
    expect(copy!.components.at(-1)).toMatchObject({ target: other!.id });
    expect(interactions[copy!.components[0]!.id]).toEqual(base.interactions[1]);
  });
});
