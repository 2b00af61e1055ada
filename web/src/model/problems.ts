/** Problems that an author should check before the pages go to an operator. */
import {
  asks,
  backTarget,
  confirmTarget,
  type Component,
  isActive,
  type Layout,
  looksOf,
  type Page,
} from "./layout.ts";
import { type Command, commandLists, triggersOf, withoutPlaceholders } from "./interactions.ts";
import { confirmPageOf, isEdge, isSpare } from "./navigation.ts";
import { fitInto, overlaps } from "./geometry.ts";
import { contentToBytes, isFault } from "./content.ts";
import { onPhone, phoneScreen } from "./phoneLayout.ts";
import type { Project } from "./project.ts";

export type ProblemKind =
  | "noCommand" // an active component has a trigger without commands
  | "lostInterface" // a command names an interface that is gone
  | "badContent" // a command can't be turned into bytes
  | "lostMaterial"
  | "lostThemePicture" // listed with the first page
  | "lostPage" // a link leads nowhere
  | "spareEdge" // of several headers or footers only the first is shown
  | "lostQuestion" // the page that should ask can't, so a plain question is asked
  | "noValue" // states, or a value to follow, and no value is named
  | "outside" // no part of the component lies on the page
  | "cutText" // a part of the text has no room in its component
  | "small"; // hard to hit with a finger

export interface Problem {
  readonly kind: ProblemKind;
  readonly pageId: string;
  /** 0: the page itself. */
  readonly componentId: number;
  /** Of a place and a size: whether it is that in the layout for phones. */
  readonly isOnPhone?: boolean;
}

/** A problem together with what it is about; `component` is missing where that is the page itself. */
export interface PlacedProblem {
  readonly kind: ProblemKind;
  readonly page: Page;
  readonly component?: Component;
  readonly isOnPhone?: boolean;
}

export function placed(problems: readonly Problem[], layout: Layout): PlacedProblem[] {
  const pages = new Map(layout.pages.map((page) => [page.id, page]));
  return problems.flatMap(({ kind, pageId, componentId, isOnPhone = false }) => {
    const page = pages.get(pageId);
    const component = page?.components.find((one) => one.id === componentId);
    return page ? [{ kind, page, isOnPhone, ...(component && { component }) }] : [];
  });
}

/** Smallest side, in px of the page, of a component for fingers. */
export const touchSide = 48;

/** @param isCut  whether the text of a component has no room in it, which only a browser knows */
export function findProblems(
  project: Project,
  interfaceIds: ReadonlySet<number>,
  isCut: (one: Component) => boolean = () => false,
): Problem[] {
  const materials = new Set(project.materials.map((one) => one.id));
  const themePicture = project.layout.theme?.material;
  const lostOfTheme = themePicture !== undefined && !materials.has(themePicture);
  const shown = project.layout.pages.filter((one) => !isEdge(one));
  const pages = new Set([backTarget, ...shown.map((one) => one.id)]);
  return project.layout.pages.flatMap((page, index) => {
    const kinds: ProblemKind[] = [];
    if (page.material !== "" && !materials.has(page.material)) kinds.push("lostMaterial");
    if (isSpare(project.layout, page)) kinds.push("spareEdge");
    if (index === 0 && lostOfTheme) kinds.push("lostThemePicture");
    const ofPage = kinds.map((kind) => ({ kind, pageId: page.id, componentId: 0 }));
    const ofComponents = page.components.flatMap((component) =>
      [
        ...problemsOf(component, page, project, interfaceIds, materials, pages),
        ...(isCut(component) ? (["cutText"] as const) : []),
      ].map((kind) => ({
        kind,
        pageId: page.id,
        componentId: component.id,
      })),
    );
    return [...ofPage, ...ofComponents, ...problemsOnPhone(page, isCut)];
  });
}

function problemsOnPhone(page: Page, isCut: (one: Component) => boolean): Problem[] {
  if (!page.phone) return [];
  const shown = onPhone(page);
  const scale = Math.min(1, fitInto(shown, phoneScreen).scale);
  return shown.components.flatMap((component) =>
    [...misplaced(component, shown, scale), ...(isCut(component) ? (["cutText"] as const) : [])].map((kind) => ({
      kind,
      pageId: page.id,
      componentId: component.id,
      isOnPhone: true,
    })),
  );
}

/** @param scale  px of the screen for one of the page */
function misplaced(component: Component, page: Page, scale = 1): ProblemKind[] {
  const kinds: ProblemKind[] = [];
  if (!overlaps(component, { x: 0, y: 0, width: page.width, height: page.height })) kinds.push("outside");
  const side = Math.min(component.width, component.height) * scale;
  if (isActive(component.type) && side < touchSide) kinds.push("small");
  return kinds;
}

function problemsOf(
  component: Component,
  page: Page,
  project: Project,
  interfaceIds: ReadonlySet<number>,
  materials: ReadonlySet<string>,
  pages: ReadonlySet<string>,
): ProblemKind[] {
  const kinds: ProblemKind[] = [];
  const commands = project.interactions[component.id];
  const lists = isActive(component.type) ? commandLists(commands) : [];
  const all = lists.flat();
  const isSet = (trigger: string) => (commands?.triggers[trigger]?.length ?? 0) > 0;
  if (!commands?.template?.length && triggersOf(component).some((trigger) => !isSet(trigger))) kinds.push("noCommand");
  if (all.some((one) => !interfaceIds.has(one.portIndex))) kinds.push("lostInterface");
  if (all.some(isBad)) kinds.push("badContent");
  if (looksOf(component).some(({ material }) => material !== "" && !materials.has(material))) {
    kinds.push("lostMaterial");
  }
  if (component.type === "image" && component.look.material === "") kinds.push("lostMaterial");
  const isAnswer = page.place === "popup" && component.type === "link" && component.target === confirmTarget;
  if (component.type === "link" && !isAnswer && !pages.has(component.target)) kinds.push("lostPage");
  if (asks(component) && component.confirmPage && !confirmPageOf(project.layout, component)) {
    kinds.push("lostQuestion");
  }
  const { binding } = component;
  const needsValue = component.type === "gauge" || (binding && (binding.follows || binding.states.length));
  if (needsValue && !binding?.value) kinds.push("noValue");
  return [...kinds, ...misplaced(component, page)];
}

function isBad(command: Command): boolean {
  return isFault(contentToBytes(withoutPlaceholders(command), command.contentFormat, command.asciiEncode));
}
