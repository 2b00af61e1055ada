/** Versions: earlier states of the project that the server keeps, and how they differ from the present one. */
import type { Component, Page } from "./layout.ts";
import { type Interface, interfaceName } from "./interfaces.ts";
import { asArray, asObject, asText, isObject, sameJson } from "./json.ts";
import type { Project } from "./project.ts";

export interface Version {
  readonly id: string;
  /** Local time of the server: "2026-11-22T14:05:33". */
  readonly time: string;
  /** Given by an author; empty: none. */
  readonly name: string;
  /** File names of the documents that existed then. */
  readonly documents: readonly string[];
}

/** The server's list, the latest first. */
export function readVersions(value: unknown): Version[] {
  return asArray(asObject(value)["versions"])
    .filter(isObject)
    .map((one) => ({
      id: asText(one["id"]),
      time: asText(one["time"]),
      name: asText(one["name"]),
      documents: Object.keys(asObject(one["documents"])),
    }));
}

/** The versions of each day, in their order. */
export function byDay(versions: readonly Version[]): { day: string; versions: Version[] }[] {
  const days: { day: string; versions: Version[] }[] = [];
  for (const version of versions) {
    const day = version.time.slice(0, 10);
    if (days.at(-1)?.day !== day) days.push({ day, versions: [] });
    days.at(-1)!.versions.push(version);
  }
  return days;
}

export interface PageDifference {
  readonly page: Page;
  /** What restoring does to it. */
  readonly kind: "returns" | "goes" | "changes";
  /** Of a page that changes: its components that differ, in any way or in their commands. */
  readonly components: readonly Component[];
}

/** What restoring `then` would do to `now`, page by page. */
export function pageDifferences(then: Project, now: Project): PageDifference[] {
  const pagesNow = new Map(now.layout.pages.map((page) => [page.id, page]));
  const idsThen = new Set(then.layout.pages.map((page) => page.id));
  return [
    ...then.layout.pages.flatMap((page): PageDifference[] => {
      const present = pagesNow.get(page.id);
      if (!present) return [{ page, kind: "returns", components: [] }];
      const components = changedComponents(then, page, now, present);
      return components.length || !sameJson(page, present) ? [{ page, kind: "changes", components }] : [];
    }),
    ...now.layout.pages
      .filter((page) => !idsThen.has(page.id))
      .map((page): PageDifference => ({ page, kind: "goes", components: [] })),
  ];
}

function changedComponents(then: Project, page: Page, now: Project, present: Page): Component[] {
  const partsNow = new Map(present.components.map((one) => [one.id, one]));
  const idsThen = new Set(page.components.map((one) => one.id));
  const commandsOf = ({ interactions }: Project, id: number) => interactions[id] ?? { triggers: {} };
  const changed = page.components.filter(
    (one) => !sameJson(one, partsNow.get(one.id)) || !sameJson(commandsOf(then, one.id), commandsOf(now, one.id)),
  );
  return [...changed, ...present.components.filter((one) => !idsThen.has(one.id))];
}

/** The names of the materials that differ. */
export function materialDifferences(then: Project, now: Project): string[] {
  const differing = (from: Project, to: Project) => {
    const others = new Map(to.materials.map((one) => [one.id, one]));
    return from.materials.filter((one) => !sameJson(one, others.get(one.id))).map((one) => one.name);
  };
  return [...new Set([...differing(then, now), ...differing(now, then)])];
}

/** The interfaces of then whose commands have no interface now, by the rule of the server. */
export function lostInterfaces(then: readonly Interface[], now: readonly Interface[]): Interface[] {
  return then.filter((one) => {
    const isSame = (other: Interface) =>
      other.nodeId === one.nodeId &&
      other.controlType === one.controlType &&
      (interfaceName(other) === interfaceName(one) || sameJson(withoutName(other), withoutName(one)));
    const isNamesake = (other: Interface) =>
      other.controlType === one.controlType && interfaceName(other) === interfaceName(one);
    return !now.some(isSame) && now.filter(isNamesake).length !== 1;
  });
}

function withoutName(one: Interface): object {
  return { ...one.info, comName: "", netPortName: "" };
}
