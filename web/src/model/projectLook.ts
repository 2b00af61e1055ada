/** Changes of what holds for the look of the whole project. */
import { sameJson } from "./json.ts";
import { type Component, hasStates, type Look } from "./layout.ts";
import { readPalette } from "./palette.ts";
import { type Project, withPages } from "./project.ts";
import type { ProjectTheme } from "./projectTheme.ts";

/** @param theme  undefined: none, all is as the browser's appearance says */
export function withTheme(project: Project, theme: ProjectTheme | undefined): Project {
  const { theme: _, ...layout } = project.layout;
  return { ...project, layout: { ...layout, ...(theme && { theme }) } };
}

/** The project with these colours in its palette; of more than there is room for, the first. */
export function withPalette(project: Project, colors: readonly string[]): Project {
  const { palette: _, ...layout } = project.layout;
  const palette = readPalette(colors);
  return { ...project, layout: { ...layout, ...(palette.length && { palette }) } };
}

/** A component with the style, colours, font and corners of another one. Text, icon, picture, place and size stay. */
export function dressedAs(component: Component, model: Component): Component {
  const { style, fontFamily, fontWeight, fontSize, radius } = model;
  const colored = (look: Look, { fill, color, border }: Look): Look => ({ ...look, fill, color, border });
  const dressed = { ...component, style, fontFamily, fontWeight, fontSize, radius };
  dressed.look = colored(component.look, model.look);
  if (hasStates(dressed) && hasStates(model)) {
    return { ...dressed, activeLook: colored(dressed.activeLook, model.activeLook) };
  }
  return dressed;
}

/**
 * The project in which all components of the same kind look like this one, and how many of them were changed.
 * @param pageId  only those of this page; empty: all
 */
export function withLookOfAll(project: Project, model: Component, pageId = ""): { project: Project; changed: number } {
  let changed = 0;
  const dressed = (one: Component) => {
    if (one.type !== model.type) return one;
    const next = dressedAs(one, model);
    if (sameJson(next, one)) return one;
    changed += 1;
    return next;
  };
  const pages = project.layout.pages.map((page) =>
    pageId && page.id !== pageId ? page : { ...page, components: page.components.map(dressed) },
  );
  return { project: withPages(project, pages), changed };
}
