/**
 * Finding and replacing in all pages and commands. What is matched is plain text as the author sees it: contents in the
 * notation of the command form. A match never splits an escape, nor a byte of hexadecimal digits.
 */
import { type ContentFault, contentToBytes, isFault } from "./content.ts";
import { notationOf, placeInNotation, unescapeText } from "./escapes.ts";
import {
  type Command,
  type ComponentCommands,
  expandTemplate,
  type Interactions,
  sampleContent,
  triggersOf,
} from "./interactions.ts";
import { type Interface, interfaceName } from "./interfaces.ts";
import { type Component, hasStates, isActive, type Page } from "./layout.ts";
import type { Project } from "./project.ts";

/** What can be searched: texts and names, contents of commands, names of their interfaces. */
export const searchFields = ["text", "content", "interface"] as const;
export type SearchField = (typeof searchFields)[number];

export interface Search {
  readonly find: string;
  readonly replacement: string;
  readonly isCaseSensitive: boolean;
  readonly fields: ReadonlySet<SearchField>;
}

/** Greatest lengths of what is replaced, in UTF-16 units. */
export interface TextLimits {
  readonly name: number;
  readonly question: number;
}

/** Why a place would not be right any more. `at`: the place in the text, from 0, of a fault of a content. */
export type ReplaceFault =
  | { readonly kind: "content"; readonly fault: ContentFault; readonly at: number }
  | { readonly kind: "empty" }
  | { readonly kind: "long"; readonly most: number }
  | { readonly kind: "noInterface" };

/** What a place is: of a page its name; of a component its texts, its name and its question; parts of a command. */
export type PlaceKind = "pageName" | "name" | "look" | "question" | "commandName" | "content" | "interfaceName";

/** A place where the text was found, and what it would be afterwards. */
export interface Hit {
  /** Tells the places apart; the same in the next search of the same project. */
  readonly key: string;
  readonly kind: PlaceKind;
  readonly page: Page;
  /** Absent: the page itself. */
  readonly component?: Component;
  /** Of a command: its trigger; empty: the list for all positions of a slider. */
  readonly trigger?: string;
  readonly before: string;
  readonly after: string;
  readonly fault?: ReplaceFault;
}

/** A text on the way through the project. `check` says why another text can't stand there. */
interface Place extends Omit<Hit, "before" | "after" | "fault"> {
  readonly field: SearchField;
  readonly text: string;
  readonly isHex?: boolean;
  readonly isNotation?: boolean;
  readonly check: (after: string) => ReplaceFault | undefined;
}

/** The text for a place; the same one leaves it as it is. */
type Visit = (place: Place) => string;

interface Surroundings {
  readonly interfaces: readonly Interface[];
  readonly limits: TextLimits;
}

/** All places that contain the text, in the order of the pages. An empty text is found nowhere. */
export function findHits(project: Project, search: Search, around: Surroundings): Hit[] {
  const hits: Hit[] = [];
  if (search.find === "") return hits;
  walk(project, around, (place) => {
    const after = search.fields.has(place.field) ? replaced(place, search) : undefined;
    if (after !== undefined) {
      const { key, kind, page, component, trigger, text: before } = place;
      const fault = after === before ? undefined : place.check(after);
      hits.push({
        key,
        kind,
        page,
        before,
        after,
        ...(component && { component }),
        ...(trigger !== undefined && { trigger }),
        ...(fault && { fault }),
      });
    }
    return place.text;
  });
  return hits;
}

/** The project with these hits replaced. Hits with a fault stay as they are. */
export function withReplaced(project: Project, hits: readonly Hit[], around: Surroundings): Project {
  const texts = new Map(hits.filter((one) => !one.fault).map((one) => [one.key, one]));
  return walk(project, around, (place) => {
    const hit = texts.get(place.key);
    return hit?.before === place.text ? hit.after : place.text;
  });
}

/** The text with every match replaced, or nothing when there is no match. */
function replaced(place: Place, { find, replacement, isCaseSensitive }: Search): string | undefined {
  const { text } = place;
  // Only characters that keep their length: other places would be meant after the change of case.
  const folded = (one: string) =>
    isCaseSensitive ? one : one.replace(/./gu, (c) => (c.toLowerCase().length === c.length ? c.toLowerCase() : c));
  const [where, what] = [folded(text), folded(find)];
  const ends = place.isNotation ? unitEnds(text, place.isHex === true) : undefined;
  let result = "";
  let from = 0;
  for (let at = where.indexOf(what); at >= 0; at = where.indexOf(what, at)) {
    const isWhole = !ends || (ends.has(at) && ends.has(at + what.length));
    if (!isWhole) {
      ++at;
      continue;
    }
    result += text.slice(from, at) + replacement;
    from = at += what.length;
  }
  return from === 0 ? undefined : result + text.slice(from);
}

/** The places between the units of a notation: characters and escapes of text, bytes and signs of hexadecimal. */
function unitEnds(text: string, isHex: boolean): Set<number> {
  const unit = isHex ? /0[xX]|\\[xX]|[0-9a-fA-F]{2}|./gsu : /\\(?:x.{2}|u.{4}|.)|./gsu;
  const ends = new Set([0]);
  for (const match of text.matchAll(unit)) ends.add(match.index + match[0].length);
  return ends;
}

function walk(project: Project, around: Surroundings, visit: Visit): Project {
  const interactions: Record<number, ComponentCommands> = { ...project.interactions };
  const pages = project.layout.pages.map((page): Page => {
    const { name: most } = around.limits;
    const name = visit({
      key: `${page.id} name`,
      kind: "pageName",
      field: "text",
      page,
      text: page.name,
      check: checkText(most, true),
    });
    const components = page.components.map((component) => {
      const commands = project.interactions[component.id];
      const walked = commands && isActive(component.type) && walkCommands(commands, page, component, around, visit);
      if (walked && walked !== commands) interactions[component.id] = walked;
      return walkComponent(component, page, around.limits, visit);
    });
    const isSame = name === page.name && components.every((one, at) => one === page.components[at]);
    return isSame ? page : { ...page, name, components };
  });
  const isSame = pages.every((one, at) => one === project.layout.pages[at]);
  const layout = isSame ? project.layout : { ...project.layout, pages };
  return isSame && sameLists(interactions, project.interactions) ? project : { ...project, layout, interactions };
}

function sameLists(one: Interactions, other: Interactions): boolean {
  return Object.keys(one).every((id) => one[Number(id)] === other[Number(id)]);
}

function checkText(most: number, isNeeded: boolean) {
  return (after: string): ReplaceFault | undefined => {
    if (isNeeded && after.trim() === "") return { kind: "empty" };
    return after.length > most ? { kind: "long", most } : undefined;
  };
}

function walkComponent(component: Component, page: Page, limits: TextLimits, visit: Visit): Component {
  const text = (part: string, kind: PlaceKind, text: string, most = Infinity) =>
    visit({
      key: `${page.id} ${component.id} ${part}`,
      kind,
      field: "text",
      page,
      component,
      text,
      check: checkText(most, false),
    });
  let result = component;
  const name = text("name", "name", component.name, limits.name);
  if (name !== component.name) result = { ...result, name };
  const look = text("look", "look", component.look.text);
  if (look !== component.look.text) result = { ...result, look: { ...result.look, text: look } };
  if (hasStates(result)) {
    const active = text("activeLook", "look", result.activeLook.text);
    if (active !== result.activeLook.text) result = { ...result, activeLook: { ...result.activeLook, text: active } };
  }
  if (result.binding?.states.length) {
    const states = result.binding.states.map((state, at) => {
      const shown = text(`state${at}`, "look", state.look.text);
      return shown === state.look.text ? state : { ...state, look: { ...state.look, text: shown } };
    });
    const isSame = states.every((state, at) => state === result.binding?.states[at]);
    if (!isSame) result = { ...result, binding: { ...result.binding, states } };
  }
  if ("confirm" in result) {
    const confirm = text("confirm", "question", result.confirm, limits.question);
    if (confirm !== result.confirm) result = { ...result, confirm };
  }
  return result;
}

function walkCommands(
  commands: ComponentCommands,
  page: Page,
  component: Component,
  around: Surroundings,
  visit: Visit,
): ComponentCommands {
  const walkList = (list: readonly Command[], trigger: string) => {
    const next = list.map((command, at) => walkCommand(command, at, { page, component, trigger }, around, visit));
    return next.every((one, at) => one === list[at]) ? list : next;
  };
  if (commands.template && component.type === "slider") {
    const template = walkList(commands.template, "");
    return template === commands.template ? commands : expandTemplate(component, template);
  }
  let result = commands;
  for (const trigger of triggersOf(component)) {
    const list = commands.triggers[trigger];
    const next = list && walkList(list, trigger);
    if (next && next !== list) result = { ...result, triggers: { ...result.triggers, [trigger]: next } };
  }
  return result;
}

function walkCommand(
  command: Command,
  index: number,
  of: { readonly page: Page; readonly component: Component; readonly trigger: string },
  { interfaces, limits }: Surroundings,
  visit: Visit,
): Command {
  const key = `${of.page.id} ${of.component.id} ${of.trigger} ${index}`;
  let result = command;
  const commandName = visit({
    ...of,
    key: `${key} name`,
    kind: "commandName",
    field: "text",
    text: command.commandName,
    check: checkText(limits.name, false),
  });
  if (commandName !== command.commandName) result = { ...result, commandName };

  const isHex = command.contentFormat !== 0;
  const notation = notationOf(command);
  const isTemplate = of.trigger === "";
  const typed = visit({
    ...of,
    key: `${key} content`,
    kind: "content",
    field: "content",
    text: notation,
    isHex,
    isNotation: true,
    check: (after) => checkContent(after, command, of.component, isTemplate),
  });
  if (typed !== notation) result = { ...result, content: isHex ? typed : (unescapeText(typed) as string) };

  const present = interfaces.find((one) => one.nodeId === command.portIndex);
  const known = present ? interfaceName(present) : command.interfaceName;
  const wanted = visit({
    ...of,
    key: `${key} interface`,
    kind: "interfaceName",
    field: "interface",
    text: known,
    check: (after) => (interfaces.some((one) => interfaceName(one) === after) ? undefined : { kind: "noInterface" }),
  });
  const target = wanted === known ? undefined : interfaces.find((one) => interfaceName(one) === wanted);
  if (target) {
    result = { ...result, portIndex: target.nodeId, controlType: target.controlType, interfaceName: wanted };
  }
  return result;
}

/** Whether a content can go out: as the command form checks it. */
function checkContent(
  notation: string,
  { contentFormat, asciiEncode }: Command,
  component: Component,
  isTemplate: boolean,
): ReplaceFault | undefined {
  const content = contentFormat === 0 ? unescapeText(notation) : notation;
  if (isFault(content)) return { kind: "content", ...content };
  const slider = isTemplate && component.type === "slider" ? component : undefined;
  const bytes = contentToBytes(sampleContent({ content, contentFormat }, slider), contentFormat, asciiEncode);
  if (!isFault(bytes)) return bytes.length === 0 ? { kind: "empty" } : undefined;
  const at = contentFormat === 0 ? placeInNotation(notation, bytes.at) : bytes.at;
  return { kind: "content", fault: bytes.fault, at };
}
