import { expect, it } from "vitest";
import { Gate } from "../../src/author/lock/gate.svelte.ts";
import { newLock } from "../../src/author/lock/pins.ts";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import type { Lock } from "../../src/model/lock.ts";
import { defaultOptions, readOptions, withLock } from "../../src/model/panelOptions.ts";
import type { Project } from "../../src/model/project.ts";
import { mergeProjects } from "../../src/model/threeWay.ts";
import { imported, readTransfer, writeTransfer } from "../../src/model/transfer.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeSurroundings } from "../support/fakeSurroundings.ts";
import { sampleProject } from "../support/projects.ts";

const lock = await newLock("0471");
const withPanel = (project: Project, change: object): Project => ({
  ...project,
  layout: { ...project.layout, panel: { ...project.layout.panel, ...change } },
});
const locked = withPanel(sampleProject(), { lock });

/** A gate before a stored lock, in a tab and a browser that keep what an earlier one has kept. */
function gateTo(stored: Lock | undefined, kept = [new Map<string, string>(), new Map<string, string>()]) {
  const clock = new FakeClock();
  const [session, storage] = kept.map((map) => ({
    getItem: (key: string) => map.get(key) ?? null,
    setItem: (key: string, text: string) => void map.set(key, text),
  }));
  return { clock, kept, gate: new Gate({ store: { lock: stored }, clock, session: session!, storage: storage! }) };
}

it("the right PIN opens for this tab, and wrong ones make the pauses longer", async () => {
  const { clock, kept, gate } = gateTo(lock);
  expect(gate.isClosed).toBe(true);
  const pauses: number[] = [];
  for (let time = 0; time < 8; ++time) {
    expect(await gate.enter("1234", lock)).toBe(false);
    pauses.push(gate.pause());
    expect(await gate.enter("0471", lock)).toBe(false);
    expect(gateTo(lock, kept).gate.pause()).toBeGreaterThan(0);
    await clock.pass(gate.pause() * 1000);
  }
  expect(pauses).toEqual([1, 2, 4, 8, 16, 32, 64, 64]);
  expect([await gate.enter("0471", lock), gate.isClosed]).toEqual([true, false]);
  expect(gateTo(lock, kept).gate.isClosed).toBe(false);
  expect(gateTo(await newLock("0471"), kept).gate.isClosed).toBe(true);
  expect(gateTo(undefined).gate.isClosed).toBe(false);
});

it("a lock that somebody else stores holds from the next start on, also for a draft from before", async () => {
  const around = new FakeSurroundings();
  around.server.put(sampleProject());
  const store = new ProjectStore(around);
  await store.load();
  around.server.put(locked);
  await store.refresh();
  expect([store.project.layout.panel.lock, store.lock]).toEqual([lock, undefined]);
  around.draft = { tab: "t1", time: 0, base: sampleProject(), project: withPanel(sampleProject(), { swipe: true }) };
  const next = new ProjectStore(around);
  await next.load();
  expect([next.isDirty, next.lock]).toEqual([true, lock]);
});

it.each([
  ["no lock", undefined, undefined],
  ["a lock", lock, lock],
  ["a salt that is no bytes", { ...lock, salt: "xyz" }, undefined],
  ["a hash that is too short", { ...lock, hash: "00" }, undefined],
  ["more rounds than anybody waits for", { ...lock, rounds: 1e12 }, undefined],
])("%s in a document", (_, stored, expected) => {
  expect(readOptions({ lock: stored })).toEqual(withLock(defaultOptions, expected));
});

it("a lock stays with its server, and merges with other options", () => {
  const plain = sampleProject();
  const text = writeTransfer(locked, []);
  expect(text).not.toContain(lock.hash);
  const transfer = readTransfer(text);
  if ("refused" in transfer) throw new Error("refused");
  expect(imported(locked, transfer, []).layout.panel.lock).toEqual(lock);
  const { project, clashes } = mergeProjects(plain, withPanel(plain, { swipe: true }), locked);
  expect([project.layout.panel, clashes]).toEqual([{ ...defaultOptions, swipe: true, lock }, []]);
});
