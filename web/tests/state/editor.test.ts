import { beforeEach, describe, expect, it } from "vitest";
import { type Drag, marqueeDrag, moveDrag, resizeDrag } from "../../src/author/editor/drags.ts";
import { Editor } from "../../src/author/editor/editor.svelte.ts";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import type { Handle } from "../../src/model/geometry.ts";
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
const places = () => editor.components.map(({ x, y }) => [x, y]);
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
  it("moves all but what is locked, arrow after arrow in one step", () => {
    set(2, { locked: true });
    editor.select([1, 2]);
    for (let count = 3; count; --count) editor.nudge(1, -1);
    expect([places().slice(0, 2), steps()]).toEqual([
      [
        [103, 97],
        [300, 100],
      ],
      2,
    ]);
    store.undo();
    expect(places()[0]).toEqual([100, 100]);
  });

  it("is a step of its own for another selection", () => {
    for (const id of [1, 2]) {
      editor.select([id]);
      editor.nudge(1, 0);
    }
    expect(steps()).toBe(2);
  });

  it.each<[string, () => void, number[][]]>([
    [
      "aligns",
      () => editor.align("left"),
      [
        [100, 100],
        [100, 100],
        [100, 100],
      ],
    ],
    [
      "distributes",
      () => editor.distribute("x"),
      [
        [100, 100],
        [350, 100],
        [600, 100],
      ],
    ],
  ])("%s in one step, and undo takes it back", (_, act, expected) => {
    editor.selectAll();
    act();
    expect([places(), steps()]).toEqual([expected, 1]);
    store.undo();
    expect(places().map(([x]) => x)).toEqual([100, 300, 600]);
  });

  it("leaves what is locked where it is when others are aligned", () => {
    set(1, { locked: true });
    editor.select([1, 2, 3]);
    editor.align("left");
    expect(places().map(([x]) => x)).toEqual([100, 300, 300]);
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
    const locked = () => editor.selected.map((one) => one.locked);
    editor.toggleLock();
    expect(locked()).toEqual([true, true]);
    editor.toggleLock();
    expect(locked()).toEqual([false, false]);
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

  it("removes it, but for what is locked", () => {
    set(2, { locked: true });
    editor.select([1, 2]);
    editor.remove();
    expect([editor.components.map((one) => one.id), selected()]).toEqual([[2, 3], []]);
    store.undo();
    expect(editor.components.length).toBe(3);
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
  it.each<[string, boolean, number[]]>([
    ["on the grid", true, [320, 360]],
    ["where it ends", false, [323, 363]],
  ])("comes with its middle %s, selected", (_, snapsToGrid, expected) => {
    editor.snapsToGrid = snapsToGrid;
    editor.add("button", { x: 403, y: 403 });
    expect([places().at(-1), selected()]).toEqual([expected, [editor.components.at(-1)!.id]]);
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
    expect([editor.selected.map(({ x, y }) => [x, y]), contents()]).toEqual([
      [
        [120, 120],
        [320, 120],
      ],
      ["ON", undefined],
    ]);
    expect(selected()).not.toContain(1);
    store.undo();
    expect([editor.components.length, editor.selected]).toEqual([3, []]);
  });

  it("are pasted each further on, and from the start after another copy", () => {
    editor.select([1]);
    const text = editor.copy();
    for (const x of [120, 140]) {
      expect(editor.paste(text)).toBe(true);
      expect([editor.selected.map((one) => one.x), contents()]).toEqual([[x], ["ON"]]);
    }
    editor.select([1]);
    editor.copy();
    editor.paste();
    expect(editor.selected.map((one) => one.x)).toEqual([120]);
  });

  it("are free where the original is locked", () => {
    set(1, { locked: true });
    editor.select([1]);
    editor.copy();
    editor.paste();
    expect(editor.selected.map((one) => one.locked)).toEqual([false]);
  });

  it("reach another page at the place that they had", () => {
    editor.select([1]);
    editor.cut();
    editor = new Editor("other", store, storage);
    editor.paste("text of another program");
    expect([places(), contents()]).toEqual([[[100, 100]], ["ON"]]);
    expect(store.project.layout.pages[0]!.components.map((one) => one.id)).toEqual([2, 3]);
  });

  it("come of a component, and of nothing else", () => {
    expect([editor.paste("text"), editor.paste(), steps()]).toEqual([false, false, 0]);
  });
});

describe("a drag", () => {
  const none = { shift: false, alt: false };
  const drag = (made: Drag, to: { x: number; y: number }, keys = none) => {
    made.move(to, keys);
    return made;
  };

  /** Button 2 is dragged from its left upper corner. Its neighbours' edges lie at x 100, 200 and 600, 700. */
  it.each<[string, number, number, Partial<typeof none>, () => void, number[]]>([
    ["snaps to its neighbours' edges", 605, 303, {}, () => undefined, [600, 300]],
    ["snaps to the grid where none is near", 437, 313, {}, () => undefined, [440, 310]],
    ["snaps to none of them with Alt", 605, 303, { alt: true }, () => undefined, [605, 303]],
    ["stays on its line with Shift", 437, 111, { shift: true }, () => undefined, [440, 100]],
    ["snaps to the grid alone where parts don't count", 605, 303, {}, () => (editor.snapsToParts = false), [610, 300]],
    ["snaps to parts alone where the grid doesn't count", 437, 313, {}, () => (editor.snapsToGrid = false), [437, 313]],
    [
      "snaps from nearer when it is seen larger",
      605,
      303,
      {},
      () => ((editor.zoom = 4), (editor.snapsToGrid = false)),
      [605, 303],
    ],
  ])("%s", (_, x, y, keys, prepare, expected) => {
    prepare();
    editor.select([2]);
    const made = drag(moveDrag(editor, { x: 300, y: 100 }), { x, y }, { ...none, ...keys });
    expect([steps(), places()[1], editor.frame()]).toMatchObject([0, [300, 100], { x: expected[0], y: expected[1] }]);
    made.end();
    expect([steps(), places()[1], editor.isMoving, editor.guides]).toEqual([1, expected, false, []]);
  });

  it("shows the lines to which it snaps", () => {
    editor.select([2]);
    drag(moveDrag(editor, { x: 300, y: 100 }), { x: 605, y: 303 });
    expect(editor.guides).toMatchObject([{ axis: "x", at: 600 }]);
  });

  it("moves all of the selection but what is locked, as one step", () => {
    set(2, { locked: true });
    editor.select([1, 2, 3]);
    drag(moveDrag(editor, { x: 0, y: 0 }), { x: 0, y: 200 }, { ...none, alt: true }).end();
    expect([places(), steps()]).toEqual([
      [
        [100, 300],
        [300, 100],
        [600, 300],
      ],
      2,
    ]);
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
    ["se", 37, 0, { shift: true, alt: false }, { width: 137, height: 69 }],
    ["e", -500, 0, { shift: false, alt: true }, { x: 300, width: 8 }],
  ])("of handle %s by %i, %i changes the size", (handle, x, y, keys, expected) => {
    editor.select([2]);
    drag(resizeDrag(editor, handle, { x: 0, y: 0 }), { x, y }, keys).end();
    expect([part(2), steps()]).toMatchObject([expected, 1]);
  });

  it("of a handle scales all of the selection", () => {
    editor.select([1, 2]);
    drag(resizeDrag(editor, "e", { x: 0, y: 0 }), { x: 300, y: 0 }, { ...none, alt: true }).end();
    expect([1, 2].map((id) => [part(id).x, part(id).width])).toEqual([
      [100, 200],
      [500, 200],
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
    expect(editor.toPage({ x: 32, y: 0 }).x).toBeCloseTo(0);
    expect(editor.toPage({ x: 608, y: 0 }).x).toBeCloseTo(1000);
    expect(editor.toPage({ x: 0, y: 1000 }).y).toBeCloseTo(400);
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
    const before = editor.viewMiddle();
    editor.resize({ width: 400, height: 900 });
    expect(editor.viewMiddle()).toEqual(before);
  });
});
