import { expect, it } from "vitest";
import { confirmTarget, emptyLayout, newComponent, newPage, type PagePlace } from "../../src/model/layout.ts";
import { findProblems } from "../../src/model/problems.ts";
import { emptyProject } from "../../src/model/project.ts";
import { Asking } from "../../src/panel/asking.svelte.ts";
import { settled } from "../support/settled.ts";

const yes = { ...newComponent("link", 0, 0), target: confirmTarget };
const page = (id: string, place: PagePlace, ...components: (typeof yes)[]) => ({
  ...newPage(id),
  ...{ id, place, components },
});
const layout = { ...emptyLayout, pages: [page("q", "popup", yes), page("bare", "popup"), page("bar", "bar", yes)] };
const toggle = (confirmPage: string, confirm = "") => ({ ...newComponent("switch", 0, 0), confirmPage, confirm });

it.each([
  ["a pop-up with a link that sends", "q", "q", []],
  ["a pop-up without one", "bare", "text", ["lostQuestion"]],
  ["a page that is no pop-up", "bar", "text", ["lostQuestion"]],
  ["a deleted page", "gone", "text", ["lostQuestion"]],
  ["no page and no text", "", "nothing", []],
])("%s asks, or the text does, and the author learns of it", async (_, id, expected, problems) => {
  const asking = new Asking();
  let answer: boolean | undefined;
  void asking.ask(toggle(id), layout).then((given) => (answer = given));
  await settled();
  const { question } = asking;
  expect(question ? (question.page?.id ?? "text") : "nothing").toBe(expected);
  expect(answer).toBe(question ? undefined : true);
  const found = findProblems(
    { ...emptyProject, layout: { ...layout, pages: [{ ...newPage("p"), components: [toggle(id)] }, ...layout.pages] } },
    new Set(),
  );
  expect(found.map(({ kind }) => kind).filter((kind) => kind === "lostQuestion")).toEqual(problems);
});

it("one question is open at a time, and each is answered once", async () => {
  const asking = new Asking();
  const answers: string[] = [];
  const ask = (name: string) => void asking.ask(toggle("q"), layout).then((given) => answers.push(`${name} ${given}`));
  ask("first");
  ask("second");
  asking.answer(true);
  asking.answer(false);
  await settled();
  expect([answers, asking.question]).toEqual([["first false", "second true"], undefined]);
});
