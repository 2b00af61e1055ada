import { beforeEach, describe, expect, it } from "vitest";
import { codes } from "../../src/api/server.ts";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import { readInteractions } from "../../src/model/interactions.ts";
import { newPage } from "../../src/model/layout.ts";
import { emptyProject, type Project, withCommands, withPages, writeProject } from "../../src/model/project.ts";
import type { Side } from "../../src/model/threeWay.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeSurroundings } from "../support/fakeSurroundings.ts";
import { settled } from "../support/settled.ts";
import { command, pageNames, renamed, sampleProject } from "../support/projects.ts";

const first = sampleProject();
const material = { id: "m1", name: "Logo", width: 1, height: 1, size: 3, data: "data:image/png;base64,AAAA" };

let around: FakeSurroundings;
let store: ProjectStore;

/** The names of the pages that the author sees, and whether something of it is unsaved. */
const shown = () => [pageNames(store.project).join(), store.isDirty];
const stored = () => around.server.pageNames.join();
const storedCommands = () => readInteractions(around.server.get("interactions"));
/** The contents of the stored click commands, by component. */
const storedClicks = () =>
  Object.entries(storedCommands()).map(([id, { triggers }]) => `${id} ${triggers["click"]![0]!.content}`);

/** Chooses one side's version of all that both have changed. */
const choose = (side: Side, isCopied = false) =>
  store.resolve(new Map(store.clashes.map((one) => [one.key, side])), isCopied);

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
    expect([store.status, store.isDirty, store.history.past, [...store.interfaceIds]]).toEqual([
      "ready",
      false,
      [],
      [1],
    ]);
    expect(store.project).toEqual(first);
  });

  it("starts empty on a new server", async () => {
    store = new ProjectStore(around);
    await store.load();
    expect([store.status, store.project]).toEqual(["ready", emptyProject]);
  });

  it("is tried again when the connection is open, or by hand", async () => {
    store = new ProjectStore(around);
    around.server.cutOff("read");
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
    expect(stored()).toBe("");
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
    expect(shown()).toEqual(["Hall", false]);
    for (let left = count; left; --left) store.redo();
    expect(shown()).toEqual(["Hall 1", true]);
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
});

describe("the draft", () => {
  const loadWithDraft = (stored = first, base = first) => {
    around.draft = { tab: "t1", time: 1234, base, project: renamed(base, "Mine") };
    return load(stored);
  };

  it("is written at most every 300 ms, with the newest state, and goes when nothing is unsaved", async () => {
    await load();
    for (const name of ["A", "B", "C"]) {
      store.change(renamed(store.project, name));
      await around.clock.pass(100);
    }
    await around.clock.pass(300);
    const { project, base } = around.draft!;
    expect([around.draftWrites, pageNames(project), pageNames(base)]).toEqual([2, ["C"], ["Hall"]]);
    for (let count = 3; count; --count) store.undo();
    await around.clock.pass(300);
    expect(around.draft).toBeUndefined();
  });

  it("is gone on with, and undo leads to what is stored", async () => {
    await loadWithDraft();
    expect([shown(), store.restored]).toEqual([["Mine", true], 1234]);
    store.undo();
    expect(shown()).toEqual(["Hall", false]);
  });

  it("that is stored already is cleared", async () => {
    await loadWithDraft(renamed(first, "Mine"));
    expect([around.draft, store.restored, store.isDirty]).toEqual([undefined, 0, false]);
  });

  it("of an older project meets a conflict when it is saved", async () => {
    await loadWithDraft(renamed(first, "Theirs"));
    expect(await store.save()).toBe("conflict");
    expect([pageNames(store.conflict!), shown(), stored()]).toEqual([["Theirs"], ["Mine", true], "Theirs"]);
  });

  it("with fields that are read no more meets no conflict for their sake", async () => {
    const [page] = first.layout.pages;
    const components = page!.components.map((one) => Object.assign({ steps: 11 }, one));
    await loadWithDraft(first, withPages(first, [{ ...page!, components }]));
    expect([await store.save(), shown()]).toEqual(["saved", ["Mine", false]]);
  });

  it("can be thrown away, and undo brings it back", async () => {
    await loadWithDraft();
    await store.discard();
    expect([shown(), store.restored]).toEqual([["Hall", false], 0]);
    store.undo();
    expect(shown()).toEqual(["Mine", true]);
  });

  async function takeTheirs(): Promise<void> {
    around.server.put(renamed(first, "Theirs"));
    await store.save();
    await choose("theirs");
  }

  it.each<[string, () => unknown]>([
    ["an edit", () => store.change(renamed(store.project, "Newer"))],
    ["an undo", () => store.undo()],
    ["a save", () => store.save()],
    ["taking what others have stored", takeTheirs],
    ["the author's wish", () => store.acceptDraft()],
  ])("is offered to be thrown away no more after %s", async (_name, act) => {
    await loadWithDraft();
    await act();
    expect(store.restored).toBe(0);
  });

  it("that the browser can't keep is reported, and work goes on", async () => {
    around.draftError = new Error("no database");
    await load();
    store.change(renamed(first, "A"));
    await around.clock.pass(300);
    const error = "draft: Error: no database";
    expect([store.status, await store.save(), around.errors]).toEqual(["ready", "saved", [error, error, error]]);
  });
});

describe("saving", () => {
  beforeEach(() => load());

  it("writes materials that have changed, commands, then the layout with its time; and clears the draft", async () => {
    store.change(renamed(first, "Mine"));
    await around.clock.pass(300);
    expect(await store.save()).toBe("saved");
    expect(around.server.calls).toEqual(["interactions", "layout"]);
    expect(around.server.get("layout")).toMatchObject({ saved: FakeClock.start + 300, pages: [{ name: "Mine" }] });
    expect([store.isDirty, store.saving]).toEqual([false, false]);
    await settled();
    expect(around.draft).toBeUndefined();
    store.change({ ...first, materials: [material] });
    await store.save();
    expect(around.server.calls.slice(2)).toEqual(["materials", "interactions", "layout"]);
  });

  it("can be undone, and then saved again", async () => {
    store.change(renamed(first, "Mine"));
    await store.save();
    store.undo();
    expect(shown()).toEqual(["Hall", true]);
    await store.save();
    expect(stored()).toBe("Hall");
  });

  it.each(["read layout", "read interfaces", "write materials", "write interactions", "write layout"])(
    'that fails at "%s" leaves all unsaved, and is whole at the next try',
    async (call) => {
      const commands = { triggers: { click: [command(1)] } };
      const mine = { ...withCommands(renamed(first, "Mine"), 2, commands), materials: [material] };
      store.change(mine);
      around.server.cutOff(call);
      await expect(store.save()).rejects.toMatchObject({ code: codes.unreachable });
      expect([store.isDirty, store.saving, stored()]).toEqual([true, false, "Hall"]);
      around.server.before = () => undefined;
      expect(await store.save()).toBe("saved");
      const names = ["layout", "materials", "interactions"] as const;
      const written = JSON.parse(JSON.stringify(writeProject(mine))) as object;
      expect(Object.fromEntries(names.map((name) => [name, around.server.get(name)]))).toMatchObject(written);
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
  const withTheirCommand = (project: Project) =>
    withCommands(project, 2, { triggers: { click: [command(1, "THEIRS")] } });

  describe("who has stored something before a save", () => {
    beforeEach(async () => {
      await load();
      store.change(renamed(first, "Mine"));
      around.server.put(theirs);
      expect(await store.save()).toBe("conflict");
      expect([pageNames(store.conflict!), stored(), around.server.calls]).toEqual([["Theirs"], "Theirs", []]);
    });

    it.each([
      ["theirs", false, "Theirs"],
      ["mine", false, "Mine"],
      ["theirs", true, "Theirs,Mine (mine)"],
    ] as const)("meets the author's choice: %s, copy %s", async (side, isCopied, names) => {
      expect(await choose(side, isCopied)).toBe(true);
      expect([shown(), stored(), store.conflict]).toEqual([[names, false], names, undefined]);
      if (side === "theirs" && !isCopied) {
        store.undo();
        expect(shown()).toEqual(["Mine", true]);
      }
    });

    it("is not asked about again when the save after the choice fails", async () => {
      around.server.cutOff("read");
      await expect(choose("mine")).rejects.toMatchObject({ code: codes.unreachable });
      around.server.before = () => undefined;
      expect([await store.save(), stored()]).toEqual(["saved", "Mine"]);
    });

    it("and again after the choice has to be chosen about again", async () => {
      around.server.put(renamed(first, "Theirs again"));
      expect(await choose("mine")).toBe(false);
      expect(pageNames(store.conflict!)).toEqual(["Theirs again"]);
    });
  });

  describe("who stores something during a save", () => {
    beforeEach(async () => {
      await load();
      store.change(renamed(first, "Mine"));
    });

    it("is found, and what was written before it is taken back", async () => {
      store.change({ ...withCommands(store.project, 3, { triggers: { click: [command(1)] } }), materials: [material] });
      around.server.during("write layout", () => around.server.set("layout", writeProject(theirs).layout));
      expect(await store.save()).toBe("conflict");
      expect(around.server.calls).toEqual(["materials", "interactions", "interactions", "materials"]);
      expect([stored(), storedClicks()]).toEqual(["Theirs", ["1 ON"]]);
      expect(around.server.get("materials")).toMatchObject({ materialList: [] });
    });

    it("over all of it keeps what is theirs", async () => {
      around.server.during("write layout", () => around.server.put(withTheirCommand(theirs)));
      expect([await store.save(), stored(), storedClicks()]).toEqual(["conflict", "Theirs", ["1 ON", "2 THEIRS"]]);
    });

    it("that was stored already does not keep a save from its end", async () => {
      around.server.during("write layout", () => around.server.put(first));
      expect([await store.save(), stored()]).toEqual(["saved", "Mine"]);
    });

    it("and is always faster ends the save, and nothing is lost", async () => {
      let times = 0;
      around.server.before = (call) => {
        if (call !== "write layout") return;
        times += 1;
        around.server.put(first);
      };
      await expect(store.save()).rejects.toMatchObject({ code: codes.changed });
      expect([shown(), times, store.saving]).toEqual([["Mine", true], 5, false]);
    });
  });

  describe("who has changed something else", () => {
    const withLobby = (project: Project) => withPages(project, [...project.layout.pages, lobby]);
    const lobby = { ...newPage("Lobby"), id: "lobby" };
    const pass = () => around.clock.pass(10_000);
    beforeEach(async () => {
      await load();
      store.change(renamed(first, "Mine"));
    });

    it("is merged with at the save, and undo takes back only what is the author's", async () => {
      around.server.put(withLobby(withTheirCommand(first)));
      expect([await store.save(), stored(), storedClicks()]).toEqual(["merged", "Mine,Lobby", ["1 ON", "2 THEIRS"]]);
      expect(shown()).toEqual(["Mine,Lobby", false]);
      store.undo();
      expect(shown()).toEqual(["Hall,Lobby", true]);
      await store.save();
      expect([stored(), storedClicks()]).toEqual(["Hall,Lobby", ["1 ON", "2 THEIRS"]]);
    });

    it("is told within ten seconds, while the page is visible", async () => {
      around.events.shown = false;
      around.server.put(withLobby(first));
      await pass();
      expect(store.others).toBeUndefined();
      around.events.shown = true;
      await pass();
      expect([pageNames(store.others!), store.clashes, shown()]).toEqual([["Hall", "Lobby"], [], ["Mine", true]]);
      around.server.put(withLobby(theirs));
      await pass();
      expect(store.clashes).toMatchObject([{ kind: "page", pageId: "hall" }]);
      store.undo();
      await pass();
      expect([shown(), store.others]).toEqual([["Theirs,Lobby", false], undefined]);
    });

    it("is told no more when the author wishes, or has saved", async () => {
      around.server.put(withLobby(first));
      await pass();
      store.ignoreOthers();
      await pass();
      expect(store.others).toBeUndefined();
      await store.save();
      store.change(renamed(store.project, "Newer"));
      await pass();
      expect(store.others).toBeUndefined();
    });

    it("costs a look of one document when nothing was saved", async () => {
      const calls: string[] = [];
      around.server.before = (call) => void calls.push(call);
      await pass();
      expect(calls).toEqual(["read layout"]);
    });
  });

  describe("who stores commands while some are sent at once", () => {
    beforeEach(() => load());
    const send = () => store.sendNow(1, "click", [command(1, "NOW")]);

    it("keeps theirs: only those of this trigger are stored, then clicked; the rest stays unsaved", async () => {
      around.server.put(withTheirCommand(first));
      store.change(renamed(first, "Mine"));
      await send();
      expect(around.server.calls).toEqual(["interactions", "click 1 click"]);
      expect([storedClicks(), stored(), shown()]).toEqual([["1 NOW", "2 THEIRS"], "Hall", ["Mine", true]]);
    });

    it("keeps theirs also at the same time", async () => {
      around.server.during("write interactions", () => around.server.put(withTheirCommand(first)));
      await send();
      expect(storedClicks()).toEqual(["1 NOW", "2 THEIRS"]);
    });

    it("and is always faster: nothing is clicked", async () => {
      around.server.before = (call) => {
        if (call === "write interactions") around.server.put(first);
      };
      await expect(send()).rejects.toMatchObject({ code: codes.changed });
      expect(around.server.calls).toEqual([]);
    });

    it("is not there: nothing is left to save when this was the only change", async () => {
      store.change(withCommands(first, 1, { triggers: { click: [command(1, "NOW")] } }));
      await send();
      expect(store.isDirty).toBe(false);
    });
  });
});

describe("when the connection is back, or the page is looked at again", () => {
  it.each([
    ["what others have stored is shown", "back", false, ["Theirs", false]],
    ["what others have stored is shown", "looked at", false, ["Theirs", false]],
    ["unsaved work stays", "back", true, ["Mine", true]],
    ["unsaved work stays", "looked at", true, ["Mine", true]],
  ] as const)("%s (%s), beside new interfaces", async (_name, event, isChanged, expected) => {
    await load();
    if (isChanged) store.change(renamed(first, "Mine"));
    around.server.put(renamed(first, "Theirs"));
    around.server.interfaceIds = [1, 2];
    await (event === "back" ? around.connect("open") : around.events.happen("shown"));
    expect([shown(), store.interfaces.length]).toEqual([expected, 2]);
  });

  it("nothing is lost when the server does not answer", async () => {
    await load();
    around.server.cutOff("read");
    await around.connect("open");
    expect([store.status, shown()]).toEqual(["ready", ["Hall", false]]);
  });
});
