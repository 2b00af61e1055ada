import { expect, it } from "vitest";
import { Notices } from "../../src/author/shell/notices.svelte.ts";
import { ProjectStore } from "../../src/author/project/store.svelte.ts";
import type { Application } from "../../src/author/application.ts";
import { stepBack } from "../../src/author/shell/stepBack.ts";
import { withPage } from "../../src/model/project.ts";
import { FakeSurroundings } from "../support/fakeSurroundings.ts";
import { sampleProject } from "../support/projects.ts";

it.each([
  ["edit", "hall", 0],
  ["edit", "other", 1],
  ["interfaces", "", 1],
])("undo and redo on %s %s tell what has changed (%i notice)", async (screen, id, count) => {
  const around = new FakeSurroundings();
  around.server.put(sampleProject());
  const store = new ProjectStore(around);
  await store.load();
  const notices = new Notices(around.clock, () => undefined);
  const app = { store, notices, route: { screen, id } } as unknown as Application;
  store.change(withPage(store.project, "hall", (page) => ({ ...page, width: 500 })));
  for (const way of ["undo", "redo"] as const) {
    stepBack(app, way);
    expect(notices.list.filter(({ text }) => text.includes(store.project.layout.pages[0]!.name))).toHaveLength(count);
    for (const one of notices.list) notices.drop(one.id);
  }
  // Nothing is left to be done again, so nothing is told.
  stepBack(app, "redo");
  expect(notices.list).toEqual([]);
});
