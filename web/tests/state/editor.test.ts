import { beforeEach, describe, expect, it } from "vitest";
import { type Drag, marqueeDrag, moveDrag, resizeDrag } from "../../src/author/editor/drags.ts";
import { Editor } from "../../src/author/editor/editor.svelte.ts";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import type { Handle, Point } from "../../src/model/geometry.ts";
import { type CommonPart, newPage } from "../../src/model/layout.ts";
import { withPages } from "../../src/model/project.ts";
import { FakeSurroundings } from "../support/fakeSurroundings.ts";
import { sampleProject } from "../support/projects.ts";

let store: ProjectStore;
let editor: Editor;
let kept: Map<string, string>;

const storage = {
  getItem: (key: string) => kept.get(key) ?? null,
  setItem: (key: string, value: string) => void kept.set(key, value),
};
const part = (id: number) => editor.components.find((one) => one.id === id)!;
/** The left upper corners of components, by default of all on the page. */
const places = (of: readonly Point[] = editor.components) => of.map(({ x, y }) => `${x},${y}`).join(" ");
const selected = () => [...editor.selection].sort();
const steps = () => store.history.past.length;
const set = (id: number, change: Partial<Omit<CommonPart, "type">>) =>
  editor.changeParts([id], (one) => ({ ...one, ...change }));

/** Buttons 1, 2 and 3, each 100 by 50, stand at x 100, 300 and 600 and y 100 on a page of 1000 by 800. */
beforeEach(async () => {
  const around = new FakeSurroundings();
  const sample = sampleProject();
  around.server.put(withPages(sample, [...sample.layout.pages, { ...newPage("Other"), id: "other" }]));
  store = new ProjectStore(around);
  await store.load();
  kept = new Map();
  editor = new Editor("hall", store, storage);
});

describe("the box of the selection", () => {
  it.each<[Parameters<Editor["placeFrame"]>[0], string, number[]]>([
    [{ x: 0 }, "0,100 200,100 500,100", [100, 100, 100]],
    [{ width: 300 }, "100,100 200,100 350,100", [50, 50, 50]],
  ])("takes all components along: %j", (change, expected, widths) => {
    editor.selectAll();
    editor.placeFrame(change, "");
    expect([places(), editor.components.map((one) => one.width)]).toEqual([expected, widths]);
    expect(editor.frame()).toMatchObject(change);
    store.undo();
    expect(places()).toBe("100,100 300,100 600,100");
  });

  it("leaves a locked component of several as it is", () => {
    set(2, { locked: true });
    editor.select([1, 2, 3]);
    editor.placeFrame({ width: 300 }, "");
    expect(places()).toBe("100,100 300,100 350,100");
  });
});

describe("the selection", () => {
  it.each<[string, () => void, number[]]>([
    ["takes the whole group along", () => editor.select([1]), [1, 2]],
    ["is replaced", () => (editor.select([1]), editor.select([3])), [3]],
    ["is added to", () => (editor.select([3]), editor.select([2], true)), [1, 2, 3]],
    ["loses a group as a whole", () => (editor.select([1, 3]), editor.toggle(part(2))), [3]],
    ["gains what is toggled", () => (editor.select([3]), editor.toggle(part(1))), [1, 2, 3]],
    ["of all leaves out what is locked", () => (set(3, { locked: true }), editor.selectAll()), [1, 2]],
    ["goes on from the last one to the first", () => (editor.select([3]), editor.selectNext(1)), [1]],
    ["goes back from nothing to the last one", () => editor.selectNext(-1), [3]],
    ["goes on from nothing to the first", () => editor.selectNext(1), [1]],
  ])("%s", (_, act, expected) => {
    editor.changeParts([1, 2], (one) => ({ ...one, group: "g" }));
    act();
    expect(selected()).toEqual(expected);
  });
});

describe("what is done to the selection", () => {
  it.each<[string, () => void, string]>([
    ["aligns", () => editor.align("left"), "100,100 100,100 100,100"],
    ["distributes", () => editor.distribute("x"), "100,100 350,100 600,100"],
    ["moves arrow after arrow", () => [1, 2, 3].forEach(() => editor.nudge(1, -1)), "103,97 303,97 603,97"],
  ])("%s in one step, and undo takes it back", (_, act, expected) => {
    editor.selectAll();
    act();
    expect([places(), steps()]).toEqual([expected, 1]);
    store.undo();
    expect(places()).toBe("100,100 300,100 600,100");
  });

  it.each<[string, () => void, string]>([
    ["moves", () => editor.nudge(1, -1), "100,100 301,99 601,99"],
    ["aligns", () => editor.align("left"), "100,100 300,100 300,100"],
    ["removes", () => editor.remove(), "100,100"],
  ])("%s all but what is locked", (_, act, expected) => {
    set(1, { locked: true });
    editor.select([1, 2, 3]);
    act();
    expect(places()).toBe(expected);
  });

  it("is a step of its own for another selection", () => {
    for (const id of [1, 2]) {
      editor.select([id]);
      editor.nudge(1, 0);
    }
    expect(steps()).toBe(2);
  });

  it.each([
    ["front", [2, 3, 1]],
    ["forward", [2, 1, 3]],
  ] as const)("stacks it to the %s", (order, expected) => {
    editor.select([1]);
    editor.order(order);
    expect(editor.components.map((one) => one.id)).toEqual(expected);
  });

  it("locks all when one is free, and else frees all", () => {
    set(1, { locked: true });
    editor.select([1, 2]);
    for (const expected of [true, false]) {
      editor.toggleLock();
      expect(editor.selected.map((one) => one.locked)).toEqual([expected, expected]);
    }
  });

  it("groups two and more, and ungroups them", () => {
    editor.select([1]);
    editor.group();
    expect(steps()).toBe(0);
    editor.select([1, 2]);
    editor.group();
    editor.select([2]);
    expect(selected()).toEqual([1, 2]);
    editor.ungroup();
    editor.select([2]);
    expect(selected()).toEqual([2]);
  });

  it("gets the text that was written, in one step, and none that was given up", () => {
    editor.select([1]);
    for (const text of ["New", undefined, "New"]) {
      editor.startWriting();
      expect(editor.writing).toBe(1);
      editor.endWriting(text);
    }
    expect([part(1).look.text, steps(), editor.writing]).toEqual(["New", 1, 0]);
    set(1, { locked: true });
    editor.startWriting();
    expect(editor.writing).toBe(0);
  });

  it("makes no step without a selection", () => {
    editor.remove();
    editor.duplicate();
    editor.copy();
    editor.nudge(1, 0);
    expect([steps(), kept.size]).toEqual([0, 0]);
  });
});

describe("a new component", () => {
  it.each<[string, boolean, string]>([
    ["on the grid", true, "320,360"],
    ["where it ends", false, "323,363"],
  ])("comes with its middle %s, selected", (_, snapsToGrid, expected) => {
    editor.snapsToGrid = snapsToGrid;
    editor.add("button", { x: 403, y: 403 });
    expect([places(editor.selected), selected()]).toEqual([expected, [editor.components.at(-1)!.id]]);
  });

  it("finds a free place for each click", () => {
    for (const _ of [1, 2, 3]) editor.add("button");
    expect(places(editor.components.slice(3))).toBe("420,20 420,120 20,170");
  });

  it("that frames others goes beneath them", () => {
    editor.add("group", { x: 400, y: 400 });
    expect(editor.components[0]!.type).toBe("group");
  });
});

describe("copies", () => {
  const contents = () =>
    editor.selected.map((one) => store.project.interactions[one.id]?.triggers["click"]?.[0]?.content);

  it("get new ids, the commands, and a place beside the original", () => {
    editor.select([1, 2]);
    editor.duplicate();
    expect([places(editor.selected), contents()]).toEqual(["120,120 320,120", ["ON", undefined]]);
    expect(selected()).not.toContain(1);
    store.undo();
    expect([editor.components.length, editor.selected]).toEqual([3, []]);
  });

  it("are pasted each further on, and from the start after another copy", () => {
    set(1, { locked: true });
    editor.select([1]);
    const text = editor.copy();
    for (const x of [120, 140]) {
      expect(editor.paste(text)).toBe(true);
      expect([editor.selected.map((one) => [one.x, one.locked]), contents()]).toEqual([[[x, false]], ["ON"]]);
    }
    editor.select([1]);
    editor.copy();
    editor.paste();
    expect(places(editor.selected)).toBe("120,120");
  });

  it("reach another page at the place that they had", () => {
    editor.select([1]);
    editor.cut();
    editor = new Editor("other", store, storage);
    editor.paste("text of another program");
    expect([places(), contents()]).toEqual(["100,100", ["ON"]]);
    expect(store.project.layout.pages[0]!.components.map((one) => one.id)).toEqual([2, 3]);
  });

  it("are pasted at a place, and come before what the clipboard of the system held before", () => {
    editor.select([3]);
    const older = editor.copy();
    editor.select([1]);
    editor.copy(false);
    editor.paste(older, { x: 403, y: 397 });
    expect([places(editor.selected), contents()]).toEqual(["400,400", ["ON"]]);
  });

  it("come of a component, and of nothing else", () => {
    expect([editor.paste("text"), editor.paste(), steps()]).toEqual([false, false, 0]);
  });
});

describe("a drag", () => {
  const none = { shift: false, free: false, copy: false };
  const drag = (made: Drag, to: { x: number; y: number }, keys = none) => {
    made.move(to, keys);
    return made;
  };

  /** Button 2 is dragged from its left upper corner. Its neighbours' edges lie at x 100, 200 and 600, 700. */
  it.each<[string, Point, Partial<typeof none>, () => void, Point]>([
    ["to its neighbours' edges", { x: 605, y: 303 }, {}, () => undefined, { x: 600, y: 300 }],
    ["to the grid where none is near", { x: 437, y: 313 }, {}, () => undefined, { x: 440, y: 310 }],
    ["to none of them with Ctrl", { x: 605, y: 303 }, { free: true }, () => undefined, { x: 605, y: 303 }],
    ["but stays on its line with Shift", { x: 437, y: 111 }, { shift: true }, () => undefined, { x: 440, y: 100 }],
    ["to the grid alone", { x: 605, y: 303 }, {}, () => (editor.snapsToParts = false), { x: 610, y: 300 }],
    ["to parts alone", { x: 437, y: 313 }, {}, () => (editor.snapsToGrid = false), { x: 437, y: 313 }],
    ["from nearer when seen larger", { x: 605, y: 203 }, {}, () => (editor.zoom = 4), { x: 610, y: 200 }],
  ])("snaps %s", (_, to, keys, prepare, expected) => {
    prepare();
    editor.select([2]);
    const made = drag(moveDrag(editor, { x: 300, y: 100 }), to, { ...none, ...keys });
    expect([steps(), places([part(2)]), editor.frame()]).toMatchObject([0, "300,100", expected]);
    expect(editor.guides.some((one) => one.axis === "x" && one.at === 600)).toBe(expected.x === 600);
    made.end();
    expect([steps(), part(2), editor.isMoving, editor.guides]).toMatchObject([1, expected, false, []]);
  });

  it("leaves the originals and brings copies, with their commands, in one step with Alt", () => {
    editor.select([1]);
    drag(moveDrag(editor, { x: 0, y: 0 }), { x: 0, y: 200 }, { ...none, copy: true }).end();
    expect([places(), steps(), editor.isCopying]).toEqual(["100,100 300,100 600,100 100,300", 1, false]);
    expect(store.project.interactions[editor.selected[0]!.id]).toBeDefined();
  });

  it("moves all of the selection but what is locked, as one step", () => {
    set(2, { locked: true });
    editor.select([1, 2, 3]);
    drag(moveDrag(editor, { x: 0, y: 0 }), { x: 0, y: 200 }, { ...none, free: true }).end();
    expect([places(), steps()]).toEqual(["100,300 300,100 600,300", 2]);
  });

  it.each<[string, (editor: Editor) => Drag]>([
    ["a move", (of) => moveDrag(of, { x: 300, y: 100 })],
    ["a change of size", (of) => resizeDrag(of, "se", { x: 400, y: 150 })],
  ])("that is cancelled leaves all as it was: %s", (_, make) => {
    editor.select([2]);
    drag(make(editor), { x: 500, y: 400 }).cancel();
    expect([steps(), editor.frame()]).toEqual([0, { x: 300, y: 100, width: 100, height: 50 }]);
  });

  it.each<[Handle, number, number, typeof none, object]>([
    ["e", 203, 0, none, { x: 300, width: 300, height: 50 }],
    ["w", -98, 0, none, { x: 200, width: 200 }],
    ["s", 0, 47, none, { y: 100, height: 100 }],
    ["n", 0, -47, none, { y: 50, height: 100 }],
    ["se", 37, 0, { ...none, shift: true }, { width: 137, height: 69 }],
    ["e", -500, 0, { ...none, free: true }, { x: 300, width: 8 }],
  ])("of handle %s by %i, %i changes the size", (handle, x, y, keys, expected) => {
    editor.select([2]);
    drag(resizeDrag(editor, handle, { x: 0, y: 0 }), { x, y }, keys).end();
    expect([part(2), steps()]).toMatchObject([expected, 1]);
  });

  it("of a handle scales all of the selection", () => {
    editor.select([1, 2]);
    drag(resizeDrag(editor, "e", { x: 0, y: 0 }), { x: 300, y: 0 }, { ...none, free: true }).end();
    expect([part(1), part(2)]).toMatchObject([
      { x: 100, width: 200 },
      { x: 500, width: 200 },
    ]);
  });

  it.each([
    [false, [1, 2]],
    [true, [1, 2, 3]],
  ])("over the page selects what it touches (added: %s)", (more, expected) => {
    editor.select([3]);
    const made = drag(marqueeDrag(editor, { x: 350, y: 120 }, more), { x: 150, y: 0 });
    expect(selected()).toEqual(expected);
    made.cancel();
    expect([selected(), editor.marquee]).toEqual([more ? [3] : [], undefined]);
  });
});

describe("the view", () => {
  it("shows the page as a whole, and never larger than it is", () => {
    editor.resize({ width: 640, height: 2000 });
    editor.fit();
    const [left, right] = [12, 628].map((x) => editor.toPage({ x, y: 1000 }));
    expect([left!.x, left!.y, right!.x].map(Math.round)).toEqual([0, 400, 1000]);
    editor.resize({ width: 5000, height: 5000 });
    editor.fit();
    expect(editor.zoom).toBe(1);
  });

  it.each([
    [2, 2],
    [100, 4],
    [0.001, 0.1],
  ])("zooms to %f about a point that stays (at most %f)", (wanted, zoom) => {
    editor.panBy(30, 40);
    const before = editor.toPage({ x: 200, y: 100 });
    editor.zoomTo(wanted, { x: 200, y: 100 });
    expect(editor.zoom).toBe(zoom);
    expect(editor.toPage({ x: 200, y: 100 }).x).toBeCloseTo(before.x);
    expect(editor.toPage({ x: 200, y: 100 }).y).toBeCloseTo(before.y);
  });

  it("counts points of the screen from its corner", () => {
    editor.origin = () => ({ x: 200, y: 60 });
    editor.zoomTo(2, { x: 0, y: 0 });
    expect(editor.toPage({ x: 300, y: 80 })).toEqual({ x: 50, y: 10 });
  });

  it("keeps its middle when the room changes", () => {
    const before = editor.toPage({ x: 400, y: 300 });
    editor.resize({ width: 400, height: 900 });
    expect(editor.toPage({ x: 200, y: 450 })).toEqual(before);
  });

  it("goes on showing the whole page in another room, until it is moved", () => {
    editor.fit();
    editor.resize({ width: 424, height: 900 });
    expect(editor.zoom).toBeCloseTo(0.4);
    editor.panBy(1, 0);
    editor.resize({ width: 800, height: 900 });
    expect(editor.zoom).toBeCloseTo(0.4);
  });
});
