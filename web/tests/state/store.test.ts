import { beforeEach, describe, expect, it } from "vitest";
import { codes, ServerError } from "../../src/api/server.ts";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import { readInteractions } from "../../src/model/interactions.ts";
import { emptyProject, type Project, withCommands, withPages, writeProject } from "../../src/model/project.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeSurroundings } from "../support/fakeSurroundings.ts";
import { command, pageNames, renamed, sampleProject } from "../support/projects.ts";

const first = sampleProject();
const material = { id: "m1", name: "Logo", width: 1, height: 1, size: 3, data: "data:image/png;base64,AAAA" };

let around: FakeSurroundings;
let store: ProjectStore;

/** The server is away for calls whose name has this in it. */
const cutOff = (part: string) => {
  around.server.before = (call) => {
    if (call.includes(part)) throw new ServerError(codes.unreachable);
  };
};
/** Somebody else does this once, when a call of that name comes in. */
const meanwhile = (name: string, act: () => void) => {
  let isDone = false;
  around.server.before = (call) => {
    if (call !== name || isDone) return;
    isDone = true;
    act();
  };
};
const storedNames = () => (around.server.get("layout") as { pages: { name: string }[] }).pages.map((page) => page.name);
const storedCommands = () => readInteractions(around.server.get("interactions"));

async function load(stored: Project | undefined = first): Promise<void> {
  around.server.put(stored);
  store = new ProjectStore(around);
  await store.load();
}

beforeEach(() => {
  around = new FakeSurroundings();
});

describe("loading", () => {
  it("takes what is stored, and starts with nothing to save and nothing to undo", async () => {
    await load();
    expect([store.status, store.isDirty, store.history.past]).toEqual(["ready", false, []]);
    expect(store.project).toEqual(first);
    expect([...store.interfaceIds]).toEqual([1]);
  });

  it("is tried again when the connection is open, or by hand", async () => {
    store = new ProjectStore(around);
    cutOff("read");
    await store.load();
    expect(store.status).toBe("unreachable");
    around.server.before = () => undefined;
    await around.connect("open");
    expect([store.status, store.connection]).toEqual(["ready", "open"]);
  });

  it.each([
    ["a newer version's", { form: "control pages", version: 99 }, { refused: "newer", version: 99 }],
    ["another program's", { pages: [] }, { refused: "foreign" }],
  ])("refuses %s pages, and replaces them only when asked to", async (_name, layout, refusal) => {
    around.server.put(first);
    around.server.set("layout", layout);
    store = new ProjectStore(around);
    await store.load();
    expect([store.status, store.refused]).toEqual(["refused", refusal]);
    store.startAnew();
    expect([store.status, store.isDirty, around.server.get("layout")]).toEqual(["ready", true, layout]);
    expect(await store.save()).toBe("saved");
    expect(storedNames()).toEqual([]);
  });
});

describe("steps", () => {
  beforeEach(() => load());
  const types = (name: string, tag = "name") => store.change(renamed(store.project, name), tag);

  it.each<[string, () => void | Promise<void>, number]>([
    ["of one tag in a row are one", () => undefined, 1],
    ["are two when the author has paused for 3 s", () => around.clock.pass(3000), 2],
    ["are one after a shorter pause", () => around.clock.pass(2999), 1],
    ["are two when the first was ended", () => store.endStep(), 2],
    ["are two with another between them", () => types("Ha", "other"), 3],
  ])("%s", async (_name, between, count) => {
    types("H");
    await between();
    types("Hall 1");
    expect(store.history.past.length).toBe(count);
    for (let left = count; left; --left) store.undo();
    expect(pageNames(store.project)).toEqual(["Hall"]);
    for (let left = count; left; --left) store.redo();
    expect(pageNames(store.project)).toEqual(["Hall 1"]);
  });

  it("without a tag are steps of their own, and the same project is none", () => {
    types("A", "");
    types("B", "");
    store.change(store.project);
    expect(store.history.past.length).toBe(2);
  });

  it("after an undo replace what could be redone", () => {
    types("A");
    types("B", "other");
    store.undo();
    types("C", "other");
    store.redo();
    expect(pageNames(store.project)).toEqual(["C"]);
    store.undo();
    expect(pageNames(store.project)).toEqual(["A"]);
  });

  it("back to what is stored leave nothing to save", () => {
    types("A");
    expect(store.isDirty).toBe(true);
    store.undo();
    expect(store.isDirty).toBe(false);
  });
});

describe("the draft", () => {
  const draftOf = (base: Project, project: Project) => ({ tab: "t1", time: 1234, base, project });

  it("is written at most every 300 ms, with the newest state, and goes when nothing is unsaved", async () => {
    await load();
    for (const name of ["A", "B", "C"]) {
      store.change(renamed(store.project, name));
      await around.clock.pass(100);
    }
    await around.clock.pass(300);
    expect([around.draftWrites, pageNames(around.draft!.project), pageNames(around.draft!.base)]).toEqual([
      2,
      ["C"],
      ["Hall"],
    ]);
    for (let count = 3; count; --count) store.undo();
    await around.clock.pass(300);
    expect(around.draft).toBeUndefined();
  });

  it("is gone on with, and undo leads to what is stored", async () => {
    around.draft = draftOf(first, renamed(first, "Mine"));
    await load();
    expect([pageNames(store.project), store.restored, store.isDirty]).toEqual([["Mine"], 1234, true]);
    store.undo();
    expect([pageNames(store.project), store.isDirty]).toEqual([["Hall"], false]);
  });

  it("that is stored already is cleared", async () => {
    around.draft = draftOf(first, renamed(first, "Mine"));
    await load(renamed(first, "Mine"));
    expect([around.draft, store.restored, store.isDirty]).toEqual([undefined, 0, false]);
  });

  it("of an older project meets a conflict when it is saved", async () => {
    around.draft = draftOf(first, renamed(first, "Mine"));
    await load(renamed(first, "Theirs"));
    expect(await store.save()).toBe("conflict");
    expect([pageNames(store.conflict!), pageNames(store.project), storedNames()]).toEqual([
      ["Theirs"],
      ["Mine"],
      ["Theirs"],
    ]);
  });

  it("with fields that are read no more meets no conflict for their sake", async () => {
    const [page] = first.layout.pages;
    const components = page!.components.map((one) => Object.assign({ steps: 11 }, one));
    const older = withPages(first, [{ ...page!, components }]);
    around.draft = draftOf(older, renamed(older, "Mine"));
    await load();
    expect(await store.save()).toBe("saved");
    expect(pageNames(store.project)).toEqual(["Mine"]);
  });

  it("can be thrown away, and undo brings it back", async () => {
    around.draft = draftOf(first, renamed(first, "Mine"));
    await load();
    await store.discard();
    expect([pageNames(store.project), store.isDirty, store.restored]).toEqual([["Hall"], false, 0]);
    store.undo();
    expect([pageNames(store.project), store.isDirty]).toEqual([["Mine"], true]);
  });

  it.each<[string, () => unknown]>([
    ["an edit", () => store.change(renamed(store.project, "Newer"))],
    ["an undo", () => store.undo()],
    ["a save", () => store.save()],
    [
      "taking what others have stored",
      async () => {
        around.server.put(renamed(first, "Theirs"));
        await store.save();
        await store.resolve("theirs");
      },
    ],
    ["the author's wish", () => store.acceptDraft()],
  ])("is offered to be thrown away no more after %s", async (_name, act) => {
    around.draft = draftOf(first, renamed(first, "Mine"));
    await load();
    await act();
    expect(store.restored).toBe(0);
  });

  it("that the browser can't keep is reported, and work goes on", async () => {
    around.draftError = new Error("no database");
    await load();
    store.change(renamed(first, "A"));
    await around.clock.pass(300);
    expect([store.status, around.errors]).toEqual([
      "ready",
      ["draft: Error: no database", "draft: Error: no database"],
    ]);
    expect(await store.save()).toBe("saved");
  });
});

describe("saving", () => {
  beforeEach(() => load());

  it("writes commands, then the layout with its time; and clears the draft", async () => {
    store.change(renamed(first, "Mine"));
    await around.clock.pass(300);
    expect(await store.save()).toBe("saved");
    expect(around.server.calls).toEqual(["interactions", "layout"]);
    expect(around.server.get("layout")).toMatchObject({ saved: FakeClock.start + 300, pages: [{ name: "Mine" }] });
    expect([store.isDirty, store.saving]).toEqual([false, false]);
    await around.clock.pass(300);
    expect(around.draft).toBeUndefined();
  });

  it("writes changed materials before all others", async () => {
    store.change({ ...first, materials: [material] });
    await store.save();
    expect(around.server.calls).toEqual(["materials", "interactions", "layout"]);
  });

  it("can be undone, and then saved again", async () => {
    store.change(renamed(first, "Mine"));
    await store.save();
    store.undo();
    expect([pageNames(store.project), store.isDirty]).toEqual([["Hall"], true]);
    await store.save();
    expect(storedNames()).toEqual(["Hall"]);
  });

  it.each(["read layout", "read interfaces", "write materials", "write interactions", "write layout"])(
    'that fails at "%s" leaves all unsaved, and is whole at the next try',
    async (call) => {
      const mine = {
        ...withCommands(renamed(first, "Mine"), 2, { triggers: { click: [command(1)] } }),
        materials: [material],
      };
      store.change(mine);
      cutOff(call);
      await expect(store.save()).rejects.toMatchObject({ code: codes.unreachable });
      expect([store.isDirty, store.saving, storedNames()]).toEqual([true, false, ["Hall"]]);
      around.server.before = () => undefined;
      expect(await store.save()).toBe("saved");
      const { layout, materials, interactions } = JSON.parse(JSON.stringify(writeProject(mine))) as Record<
        string,
        object
      >;
      expect(around.server.get("layout")).toMatchObject(layout!);
      expect(around.server.get("materials")).toEqual(materials);
      expect(around.server.get("interactions")).toEqual(interactions);
    },
  );

  it("stores commands of a deleted interface under a number that no interface gets", async () => {
    around.server.interfaceIds = [2];
    store.change(renamed(first, "Mine"));
    await store.save();
    expect(storedCommands()[1]!.triggers["click"]!.map((one) => one.portIndex)).toEqual([-1]);
    expect([store.project.interactions[1]!.triggers["click"]![0]!.portIndex, store.isDirty]).toEqual([-1, false]);
  });
});

describe("somebody else", () => {
  const theirs = renamed(first, "Theirs");
  beforeEach(async () => {
    await load();
    store.change(renamed(first, "Mine"));
  });

  it("who has stored something is not overwritten", async () => {
    around.server.put(theirs);
    expect(await store.save()).toBe("conflict");
    expect([pageNames(store.conflict!), storedNames(), around.server.calls]).toEqual([["Theirs"], ["Theirs"], []]);
  });

  it.each([
    ["theirs", ["Theirs"]],
    ["mine", ["Mine"]],
    ["copy", ["Theirs", "Mine (mine)"]],
  ] as const)("and the author's choice: %s", async (choice, names) => {
    around.server.put(theirs);
    await store.save();
    expect(await store.resolve(choice)).toBe(true);
    expect([pageNames(store.project), storedNames(), store.isDirty]).toEqual([names, names, false]);
    expect(store.conflict).toBeUndefined();
  });

  it("who is still not reached after the choice: what is mine replaces theirs at the next save", async () => {
    around.server.put(theirs);
    await store.save();
    cutOff("read");
    await expect(store.resolve("mine")).rejects.toMatchObject({ code: codes.unreachable });
    around.server.before = () => undefined;
    expect(await store.save()).toBe("saved");
    expect(storedNames()).toEqual(["Mine"]);
  });

  it("who stores again after the choice has to be chosen about again", async () => {
    around.server.put(theirs);
    await store.save();
    around.server.put(renamed(first, "Theirs again"));
    expect(await store.resolve("mine")).toBe(false);
    expect(pageNames(store.conflict!)).toEqual(["Theirs again"]);
  });

  it("who stores a layout meanwhile is found, and what was written before it is taken back", async () => {
    store.change({ ...withCommands(store.project, 3, { triggers: { click: [command(1)] } }), materials: [material] });
    meanwhile("write layout", () => around.server.set("layout", writeProject(theirs).layout));
    expect(await store.save()).toBe("conflict");
    expect(around.server.calls).toEqual(["materials", "interactions", "interactions", "materials"]);
    expect([storedNames(), Object.keys(storedCommands())]).toEqual([["Theirs"], ["1"]]);
    expect(around.server.get("materials")).toMatchObject({ materialList: [] });
  });

  it("who stores over all of it meanwhile keeps what is theirs", async () => {
    meanwhile("write layout", () => around.server.put(withCommands(theirs, 2, { triggers: { click: [command(1)] } })));
    expect(await store.save()).toBe("conflict");
    expect([storedNames(), Object.keys(storedCommands())]).toEqual([["Theirs"], ["1", "2"]]);
  });

  it("who stores the same again meanwhile does not keep a save from its end", async () => {
    meanwhile("write layout", () => around.server.put(first));
    expect(await store.save()).toBe("saved");
    expect(storedNames()).toEqual(["Mine"]);
  });

  it("who is always faster is left to the author's choice in the end", async () => {
    let times = 0;
    around.server.before = (call) => {
      if (call !== "write layout") return;
      times += 1;
      around.server.put(first);
    };
    expect([await store.save(), times]).toEqual(["conflict", 5]);
    expect(store.saving).toBe(false);
  });
});

describe("when the connection is back, or the page is looked at again", () => {
  beforeEach(() => load());
  const again = [
    ["back", () => around.connect("open")],
    ["looked at", () => around.events.happen("shown")],
  ] as const;

  it.each(again)("what others have stored is shown (%s)", async (_name, act) => {
    around.server.put(renamed(first, "Theirs"));
    around.server.interfaceIds = [1, 2];
    await act();
    expect([pageNames(store.project), store.isDirty, store.interfaces.length]).toEqual([["Theirs"], false, 2]);
  });

  it.each(again)("unsaved work stays, beside new interfaces (%s)", async (_name, act) => {
    store.change(renamed(first, "Mine"));
    around.server.put(renamed(first, "Theirs"));
    around.server.interfaceIds = [1, 2];
    await act();
    expect([pageNames(store.project), store.isDirty, store.interfaces.length]).toEqual([["Mine"], true, 2]);
  });

  it("nothing is lost when the server does not answer", async () => {
    cutOff("read");
    await around.connect("open");
    expect([store.status, pageNames(store.project)]).toEqual(["ready", ["Hall"]]);
  });
});

describe("sending at once", () => {
  beforeEach(() => load());
  const send = () => store.sendNow(1, "click", [command(1, "NOW")]);

  it("stores the commands of this trigger alone, then clicks; other changes stay unsaved", async () => {
    around.server.put(withCommands(first, 2, { triggers: { click: [command(1, "THEIRS")] } }));
    store.change(renamed(first, "Mine"));
    await send();
    expect(around.server.calls).toEqual(["interactions", "click 1 click"]);
    expect([1, 2].map((id) => storedCommands()[id]!.triggers["click"]![0]!.content)).toEqual(["NOW", "THEIRS"]);
    expect([storedNames(), store.isDirty]).toEqual([["Hall"], true]);
  });

  it("leaves nothing to save when this was the only change", async () => {
    store.change(withCommands(first, 1, { triggers: { click: [command(1, "NOW")] } }));
    await send();
    expect(store.isDirty).toBe(false);
  });

  it("stores on top of what somebody else stores at the same time", async () => {
    meanwhile("write interactions", () =>
      around.server.put(withCommands(first, 2, { triggers: { click: [command(1, "THEIRS")] } })),
    );
    await send();
    expect([1, 2].map((id) => storedCommands()[id]!.triggers["click"]![0]!.content)).toEqual(["NOW", "THEIRS"]);
  });

  it("clicks nothing when others are always faster", async () => {
    around.server.before = (call) => {
      if (call === "write interactions") around.server.put(first);
    };
    await expect(send()).rejects.toMatchObject({ code: codes.changed });
    expect(around.server.calls).toEqual([]);
  });
});

it("starts empty on a new server", async () => {
  store = new ProjectStore(around);
  await store.load();
  expect([store.status, store.project]).toEqual(["ready", emptyProject]);
});
