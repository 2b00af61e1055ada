/** What the author does while the server's answer to a save or another call is on its way. */
import { beforeEach, expect, it } from "vitest";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import { withCommands } from "../../src/model/project.ts";
import { FakeSurroundings } from "../support/fakeSurroundings.ts";
import { command, pageNames, renamed, sampleProject } from "../support/projects.ts";

const first = sampleProject();
let around: FakeSurroundings;
let store: ProjectStore;

const rename = (name: string) => store.change(renamed(store.project, name), "name");

beforeEach(async () => {
  around = new FakeSurroundings();
  around.server.put(first);
  store = new ProjectStore(around);
  await store.load();
});

it.each(["read layout", "write interactions", "write layout"])(
  'an edit at "%s" of a save is kept, saved next, and undone to what the save has stored',
  async (call) => {
    rename("Saved");
    around.server.during(call, () => rename("Newer"));
    expect(await store.save()).toBe("saved");
    const isTaken = call === "read layout";
    expect([around.server.pageNames, pageNames(store.project), store.isDirty]).toEqual([
      [isTaken ? "Newer" : "Saved"],
      ["Newer"],
      !isTaken,
    ]);
    await around.clock.pass(300);
    expect(around.draft && [pageNames(around.draft.base), pageNames(around.draft.project)]).toEqual(
      isTaken ? undefined : [["Saved"], ["Newer"]],
    );
    if (!isTaken) {
      store.undo();
      expect([pageNames(store.project), store.isDirty]).toEqual([["Saved"], false]);
      store.redo();
    }
    await store.save();
    expect([around.server.pageNames, store.isDirty, store.conflict]).toEqual([["Newer"], false, undefined]);
  },
);

it("an edit is kept beside renumbered commands of a deleted interface", async () => {
  around.server.interfaceIds = [2];
  rename("Saved");
  around.server.during("write layout", () => rename("Newer"));
  await store.save();
  expect([pageNames(store.project), store.isDirty]).toEqual([["Newer"], true]);
  store.undo();
  expect([store.project.interactions[1]!.triggers["click"]![0]!.portIndex, store.isDirty]).toEqual([-1, false]);
  store.redo();
  expect(await store.save()).toBe("saved");
  expect([around.server.pageNames, store.project.interactions[1]!.triggers["click"]![0]!.portIndex]).toEqual([
    ["Newer"],
    -1,
  ]);
});

it("an edit is kept while a chosen version is stored", async () => {
  rename("Mine");
  around.server.put(renamed(first, "Theirs"));
  await store.save();
  around.server.during("write layout", () => rename("Newer"));
  expect(await store.resolve(new Map(store.clashes.map((one) => [one.key, "mine"])))).toBe(true);
  expect([around.server.pageNames, pageNames(store.project), store.isDirty]).toEqual([["Mine"], ["Newer"], true]);
});

it("an undo is kept", async () => {
  rename("Saved");
  around.server.during("write layout", () => store.undo());
  await store.save();
  expect([around.server.pageNames, pageNames(store.project), store.isDirty]).toEqual([["Saved"], ["Hall"], true]);
});

it("an edit after the author has asked to discard is kept", async () => {
  rename("Mine");
  around.server.during("read layout", () => rename("Newer"));
  await store.discard();
  expect([pageNames(store.project), store.isDirty]).toEqual([["Newer"], true]);
});

it("a save is not taken back by what was read before it", async () => {
  let saved: Promise<unknown> | undefined;
  // The documents of the refresh were read already; its last answer waits until the save is done.
  const read = around.server.materials;
  around.server.materials = async () => {
    const answer = await read();
    around.server.materials = read;
    rename("Saved");
    await (saved = store.save());
    return answer;
  };
  await store.refresh();
  await saved;
  expect([pageNames(store.project), store.isDirty]).toEqual([["Saved"], false]);
});

it("sending a command again that is stored already leaves undo a way back to what is stored", async () => {
  const list = first.interactions[1]!.triggers["click"]!;
  rename("Mine");
  await store.sendNow(1, "click", list);
  store.undo();
  expect(store.isDirty).toBe(false);
});

it("an edit while a command is sent at once is kept", async () => {
  const list = [command(1, "NOW")];
  store.change(withCommands(first, 1, { triggers: { click: list } }));
  around.server.during("write interactions", () => rename("Newer"));
  await store.sendNow(1, "click", list);
  expect([pageNames(store.project), store.isDirty]).toEqual([["Newer"], true]);
});
