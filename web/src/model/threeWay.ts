/**
 * Joins what two authors have made of a common state. What only one of them has changed is taken; what both have
 * changed differently is a clash, which the author decides. Parts are compared by their ids: fields of the project,
 * pages, components with their commands, own blocks, materials.
 */
import { withBlocks } from "./blocks.ts";
import type { Block } from "./readBlocks.ts";
import { commandLists, type ComponentCommands, type Interactions } from "./interactions.ts";
import type { Component, Page } from "./layout.ts";
import { sameJson } from "./json.ts";
import { type PhoneLayout, type PhonePlace, withoutStrayPlaces } from "./phoneLayout.ts";
import type { Project } from "./project.ts";

export type Side = "mine" | "theirs";

/** A part that both have changed differently. */
export interface Clash {
  /** Names the part, for the choices. */
  readonly key: string;
  readonly kind: "project" | "page" | "component" | "material";
  /** Of a page, and of a component the page on which it is. */
  readonly pageId: string;
  /** Of a component. */
  readonly componentId: number;
  /** Of a material. */
  readonly materialId: string;
}

/** Which version of a clashing part is taken, by the clash's key. Without a choice it is mine. */
export type Choices = ReadonlyMap<string, Side>;

export interface Merged {
  readonly project: Project;
  readonly clashes: readonly Clash[];
}

/** A component with all that belongs to it, and a page made of such. */
interface Part {
  readonly component: Component;
  readonly commands: ComponentCommands | undefined;
  /** In the layout for phones. */
  readonly place: PhonePlace | undefined;
}
type Sheet = Omit<Page, "components" | "phone"> & {
  readonly parts: readonly Part[];
  readonly phone: PhoneLayout | undefined;
};

export function mergeProjects(base: Project, mine: Project, theirs: Project, choices: Choices = new Map()): Merged {
  if (mine === base) return { project: theirs, clashes: [] };
  const merger = new Merger(choices);
  return { project: merger.project(base, mine, theirs), clashes: merger.clashes };
}

class Merger {
  readonly clashes: Clash[] = [];

  constructor(readonly choices: Choices) {}

  project(base: Project, mine: Project, theirs: Project): Project {
    const of = part("project");
    const layout = this.#fields(base.layout, mine.layout, theirs.layout, of, ["pages", "panel", "blocks"]);
    const panel = this.#fields(base.layout.panel, mine.layout.panel, theirs.layout.panel, of, []);
    const sheets = merge3(sheetsOf(base), sheetsOf(mine), sheetsOf(theirs), (one) => one.id, this.#sheet);
    const material = (...three: Three<Project["materials"][number]>) =>
      this.#pick(...three, part("material", { materialId: known(three).id }));
    const materials = merge3(base.materials, mine.materials, theirs.materials, (one) => one.id, material);
    const block = (...three: Three<Block>) => this.#pick(...three, of);
    const [from, own, others] = [base, mine, theirs].map((one) => one.layout.blocks ?? []);
    const blocks = merge3(from!, own!, others!, (one) => one.id, block);
    const interactions: Record<number, ComponentCommands> = {};
    for (const { component, commands } of sheets.flatMap((sheet) => sheet.parts)) {
      if (commands) interactions[component.id] = commands;
    }
    const pages = sheets.map(({ parts, phone, ...page }): Page => {
      const components = parts.map((one) => one.component);
      return withoutStrayPlaces({ ...page, components, ...(phone && { phone }) });
    });
    return { layout: withBlocks({ ...layout, pages, panel }, blocks), interactions, materials };
  }

  readonly #sheet = (...three: Three<Sheet>): Sheet | undefined => {
    const [base, mine, theirs] = three;
    const of = part("page", { pageId: known(three).id });
    if (!base || !mine || !theirs) return this.#pick(...three, of);
    const partOf = (...parts: Three<Part>) => this.#part(parts, base.id);
    const hasPlaces = [base, mine, theirs].every((one) => one.phone);
    const [from, own, others] = [base, mine, theirs].map((one) => (hasPlaces ? one.parts : one.parts.map(unplaced)));
    const parts = merge3(from!, own!, others!, (one) => one.component.id, partOf);
    const phone = this.#phone([base.phone, mine.phone, theirs.phone], parts, of);
    return { ...this.#fields(base, mine, theirs, of, ["parts", "phone"]), parts, phone };
  };

  /** With the places of the joined components; where one of the three has no such layout, as a whole. */
  #phone(three: Three<PhoneLayout>, parts: readonly Part[], of: Clash): PhoneLayout | undefined {
    const [base, mine, theirs] = three;
    if (!base || !mine || !theirs) return this.#pick(...three, of);
    const placed = parts.flatMap(({ component, place }) => (place ? [[component.id, place] as const] : []));
    return { ...this.#fields(base, mine, theirs, of, ["places"]), places: Object.fromEntries(placed) };
  }

  #part(three: Three<Part>, pageId: string): Part | undefined {
    const [base, mine, theirs] = three;
    const of = part("component", { pageId, componentId: known(three).component.id });
    if (!base || !mine || !theirs) return this.#pick(...three, of);
    return {
      component: this.#pick(base.component, mine.component, theirs.component, of),
      commands: this.#pick(base.commands, mine.commands, theirs.commands, of),
      place: this.#pick(base.place, mine.place, theirs.place, of),
    };
  }

  /** An object joined field by field; the fields in `except` are mine. */
  #fields<Value extends object>(base: Value, mine: Value, theirs: Value, of: Clash, except: (keyof Value)[]): Value {
    const result = { ...theirs, ...mine };
    for (const key of Object.keys(result) as (keyof Value)[]) {
      if (!except.includes(key)) result[key] = this.#pick(base[key], mine[key], theirs[key], of);
    }
    return result;
  }

  /** The value of the side that has changed it. */
  #pick<Value>(base: Value, mine: Value, theirs: Value, of: Clash): Value {
    if (sameJson(base, theirs) || sameJson(mine, theirs)) return mine;
    if (sameJson(base, mine)) return theirs;
    if (!this.clashes.some((one) => one.key === of.key)) this.clashes.push(of);
    return this.choices.get(of.key) === "theirs" ? theirs : mine;
  }
}

type Three<Item> = [base: Item | undefined, mine: Item | undefined, theirs: Item | undefined];

function part(kind: Clash["kind"], of: Partial<Clash> = {}): Clash {
  const { pageId = "", componentId = 0, materialId = "" } = of;
  return { kind, pageId, componentId, materialId, key: [kind, pageId, componentId, materialId].join("/") };
}

/** One of the three that exists; all have the same id. */
function known<Item>([base, mine, theirs]: Three<Item>): Item {
  return (base ?? mine ?? theirs)!;
}

const unplaced = (part: Part): Part => ({ ...part, place: undefined });

function sheetsOf(project: Project): Sheet[] {
  return project.layout.pages.map(({ components, phone, ...page }) => ({
    ...page,
    phone,
    parts: components.map((component) => ({
      component,
      commands: commandsOf(project.interactions, component.id),
      place: phone?.places[component.id],
    })),
  }));
}

/** Empty lists are no commands. */
function commandsOf(interactions: Interactions, id: number): ComponentCommands | undefined {
  return commandLists(interactions[id]).some((list) => list.length) ? interactions[id] : undefined;
}

/** Three lists joined item by item, in the order of the side that has changed it. Nothing from `join`: it is deleted. */
function merge3<Item>(
  base: readonly Item[],
  mine: readonly Item[],
  theirs: readonly Item[],
  idOf: (item: Item) => string | number,
  join: (...three: Three<Item>) => Item | undefined,
): Item[] {
  const [from, own, others] = [base, mine, theirs].map((list) => new Map(list.map((item) => [idOf(item), item])));
  const kept = (list: readonly Item[], among: Map<unknown, Item>) => list.map(idOf).filter((id) => among.has(id));
  const isMoved = !sameJson(kept(mine, from!), kept(base, own!));
  const ids = isMoved ? joinIds(mine.map(idOf), theirs.map(idOf)) : joinIds(theirs.map(idOf), mine.map(idOf));
  return ids.flatMap((id) => join(from!.get(id), own!.get(id), others!.get(id)) ?? []);
}

/** The ids in the order of the first list, those of the second alone behind their predecessors. */
function joinIds<Id>(ids: readonly Id[], more: readonly Id[]): Id[] {
  const result = [...ids];
  more.forEach((id, index) => {
    if (!result.includes(id)) result.splice(index ? result.indexOf(more[index - 1]!) + 1 : 0, 0, id);
  });
  return result;
}
