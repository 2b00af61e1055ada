import { expect, it } from "vitest";
import { changesBetween, isOnPage } from "../../src/model/changes.ts";
import { newPage } from "../../src/model/layout.ts";
import { type Project, withCommands, withPage, withPages } from "../../src/model/project.ts";
import { sampleProject } from "../support/projects.ts";

const sample = sampleProject();
const other = { ...newPage("Other"), id: "other" };
const before = withPages(sample, [...sample.layout.pages, other]);
const renamed = (id: string, name: string) => (from: Project) => withPage(from, id, (page) => ({ ...page, name }));

it.each<[string, (from: Project) => Project, string, boolean]>([
  ["nothing", (from) => structuredClone(from), "", true],
  ["the edited page", renamed("hall", "H"), "page hall", true],
  ["another page", renamed("other", "O"), "page other", false],
  ["commands alone", (from) => withCommands(from, 1, { triggers: {} }), "commands hall", true],
  ["a deleted page", (from) => withPages(from, [from.layout.pages[0]!]), "removed other", false],
  ["a new page", (from) => withPages(from, [...from.layout.pages, newPage("New")]), "added New", false],
  ["the start page", (from) => ({ ...from, layout: { ...from.layout, startPage: "other" } }), "options", false],
])("%s is what has changed", (_, change, expected, isSeen) => {
  const changes = changesBetween(before, change(before));
  const text = (id: string, name: string) => (id.length < 6 ? id : name);
  const words = changes.map((one) => ("page" in one ? `${one.kind} ${text(one.page.id, one.page.name)}` : one.kind));
  expect([words.join(), isOnPage(changes, "hall")]).toEqual([expected, isSeen]);
});
