/** Where interfaces and materials are used, and moving of commands from one interface to another. */
import { type Component, isActive, type Layout, looksOf, type Page } from "./layout.ts";
import { type Command, mapCommands, triggersOf } from "./interactions.ts";
import { type Interface, interfaceName } from "./interfaces.ts";
import type { Project } from "./project.ts";

/** A command, and what it belongs to. */
export interface CommandUse {
  readonly page: Page;
  readonly component: Component;
  /** Empty: the list from which a slider's positions are made. */
  readonly trigger: string;
  /** Place in its list, from 0. */
  readonly index: number;
  readonly command: Command;
}

/** All commands that a panel can send, in the order of the pages. A slider's template counts once. */
export function commandUses(project: Project): CommandUse[] {
  return project.layout.pages.flatMap((page) =>
    page.components
      .filter(({ type }) => isActive(type))
      .flatMap((component) => {
        const commands = project.interactions[component.id];
        const lists: [string, readonly Command[]][] = commands?.template
          ? [["", commands.template]]
          : triggersOf(component).map((trigger) => [trigger, commands?.triggers[trigger] ?? []]);
        return lists.flatMap(([trigger, list]) =>
          list.map((command, index) => ({ page, component, trigger, index, command })),
        );
      }),
  );
}

/** The uses by what `key` says, in the order of their first ones. */
export function grouped<One, Key>(list: readonly One[], key: (one: One) => Key): Map<Key, One[]> {
  const groups = new Map<Key, One[]>();
  for (const one of list) {
    const group = groups.get(key(one));
    if (group) group.push(one);
    else groups.set(key(one), [one]);
  }
  return groups;
}

/**
 * The project with the commands of one interface given to another.
 * @param from  node id
 * @param pageId  only those of this page; empty: all
 */
export function withMovedCommands(project: Project, from: number, to: Interface, pageId = ""): Project {
  const page = project.layout.pages.find((one) => one.id === pageId);
  const ids = page && new Set(page.components.map((one) => one.id));
  const target = { portIndex: to.nodeId, controlType: to.controlType, interfaceName: interfaceName(to) };
  const concerned = Object.entries(project.interactions).filter(([id]) => ids?.has(Number(id)) ?? pageId === "");
  const moved = mapCommands(Object.fromEntries(concerned), (one) =>
    one.portIndex === from ? { ...one, ...target } : one,
  );
  return { ...project, interactions: { ...project.interactions, ...moved } };
}

/** Where a material is used: `component` is missing where it is the background of the page. */
export interface MaterialUse {
  readonly page: Page;
  readonly component?: Component;
}

export function usesOfMaterial(layout: Layout, id: string): MaterialUse[] {
  return layout.pages.flatMap((page) => [
    ...(page.material === id ? [{ page }] : []),
    ...page.components
      .filter((one) => looksOf(one).some((look) => look.material === id))
      .map((component) => ({ page, component })),
  ]);
}
