/** Reading of what a panel shows of the layout document; see wholeLayout.ts for the rest. */
import {
  alignments,
  clockForms,
  type CommonPart,
  type Component,
  componentSides,
  componentTypes,
  emptyLayout,
  fontFamilyNames,
  fontSizes,
  fontWeights,
  imageFits,
  type Layout,
  layoutVersion,
  type Look,
  newComponent,
  newPage,
  type Page,
  pagePlaces,
  pageSides,
  partStyles,
  pressModes,
  sliderSteps,
} from "./layout.ts";
import { readBinding } from "./readBinding.ts";
import { asColor } from "./colors.ts";
import { asIcon } from "./icons.ts";
import { readOptions } from "./panelOptions.ts";
import { readPhone } from "./phoneLayout.ts";
import { readProjectTheme } from "./projectTheme.ts";
import { asArray, asChoice, asNumber, asObject, asText, isObject, type JsonObject } from "./json.ts";

export const layoutForm = "control pages";

/** Why a stored document can't be used: a newer version of this application wrote it, or another program. */
export type Refusal = { refused: "newer"; version: number } | { refused: "foreign" };

export function isRefused<Value extends object>(value: Value | Refusal): value is Refusal {
  return "refused" in value;
}

/** Checks form and version before anything else is read. */
export function refusal(value: unknown, expectedForm: string, version: number): Refusal | undefined {
  if (!isObject(value) || value["form"] !== expectedForm) return { refused: "foreign" };
  const found = asNumber(value["version"], 0, 0, Number.MAX_SAFE_INTEGER);
  return found > version ? { refused: "newer", version: found } : undefined;
}

/** What a panel uses of the layout in a stored document; without a document, an empty layout. */
export function readLayout(value: unknown): Layout | Refusal {
  if (value === undefined || value === null) return emptyLayout;
  const refused = refusal(value, layoutForm, layoutVersion);
  if (refused) return refused;
  const document = asObject(value);
  const pageIds = new Set<string>();
  const componentIds = new Set<number>();
  const pages = asArray(document["pages"])
    .filter(isObject)
    .flatMap((page) => {
      const read = readPage(page, componentIds);
      if (pageIds.has(read.id)) return [];
      pageIds.add(read.id);
      return [read];
    });
  const startPage = asText(document["startPage"]);
  const panel = readOptions(document["panel"]);
  const theme = readProjectTheme(document["theme"]);
  return {
    startPage: pageIds.has(startPage) ? startPage : "",
    pages,
    panel,
    ...(theme && { theme }),
  };
}

/** A page in a document or an exported file. Components whose id is taken already are left out. */
export function readPage(value: unknown, takenIds = new Set<number>()): Page {
  const page = asObject(value);
  const fresh = newPage(asText(page["name"]));
  const { least, most } = pageSides;
  const components = asArray(page["components"]).flatMap((one) => {
    const component = readComponent(one);
    if (!component || takenIds.has(component.id)) return [];
    takenIds.add(component.id);
    return [component];
  });
  const phone = readPhone(page["phone"], components);
  return {
    id: asText(page["id"]) || fresh.id,
    name: fresh.name,
    width: Math.round(asNumber(page["width"], fresh.width, least, most)),
    height: Math.round(asNumber(page["height"], fresh.height, least, most)),
    background: asColor(page["background"]),
    material: asText(page["material"]),
    place: asChoice(page["place"], pagePlaces, fresh.place),
    closesOutside: page["closesOutside"] !== false,
    isBare: page["isBare"] === true,
    components,
    ...(phone && { phone }),
  };
}

function readLook(value: unknown): Look {
  const look = asObject(value);
  return {
    text: asText(look["text"]),
    fill: asColor(look["fill"]),
    color: asColor(look["color"]),
    border: asColor(look["border"]),
    icon: asIcon(asText(look["icon"])),
    material: asText(look["material"]),
  };
}

/** Whether the server's command map can hold this id. */
function isComponentId(id: unknown): id is number {
  return typeof id === "number" && Number.isInteger(id) && id > 0 && id <= 0x7fffffff;
}

/** A component, or nothing when its type or id can't be used. What its kind doesn't have is left out. */
export function readComponent(value: unknown): Component | undefined {
  const from = asObject(value);
  const type = componentTypes.find((known) => known === from["type"]);
  const id = from["id"];
  if (!type || !isComponentId(id)) return undefined;
  const fresh: Component = newComponent(type, 0, 0);
  const common = readCommon(from, id, fresh);
  const asking = { confirm: asText(from["confirm"]), confirmPage: asText(from["confirmPage"]) };
  switch (fresh.type) {
    case "button":
      return {
        ...common,
        type: fresh.type,
        activeLook: readLook(from["activeLook"]),
        mode: asChoice(from["mode"], pressModes, fresh.mode),
        ...asking,
        interval: Math.round(asNumber(from["interval"], fresh.interval, 50, 60_000)),
        hold: Math.round(asNumber(from["hold"], fresh.hold, 200, 10_000)),
      };
    case "switch":
      return { ...common, type: fresh.type, activeLook: readLook(from["activeLook"]), ...asking };
    case "slider":
      return {
        ...common,
        type: fresh.type,
        ...asking,
        steps: Math.round(asNumber(from["steps"], fresh.steps, sliderSteps.least, sliderSteps.most)),
        min: asNumber(from["min"], fresh.min, -1e6, 1e6),
        max: asNumber(from["max"], fresh.max, -1e6, 1e6),
        vertical: from["vertical"] === true,
        live: from["live"] === true,
      };
    case "image":
      return { ...common, type: fresh.type, fit: asChoice(from["fit"], imageFits, fresh.fit) };
    case "link":
      return { ...common, type: fresh.type, target: asText(from["target"]) };
    case "clock":
      return { ...common, type: fresh.type, clock: asChoice(from["clock"], clockForms, fresh.clock) };
    case "gauge":
      return {
        ...common,
        type: fresh.type,
        min: asNumber(from["min"], fresh.min, -1e6, 1e6),
        max: asNumber(from["max"], fresh.max, -1e6, 1e6),
      };
    case "text":
    case "group":
    case "lamp":
      return { ...common, type: fresh.type };
  }
}

/** What components of all kinds have; where it is missing or can't be used, a fresh one's. */
function readCommon(from: JsonObject, id: number, fresh: Component): CommonPart {
  const side = (key: "width" | "height") =>
    Math.round(asNumber(from[key], fresh[key], componentSides.least, componentSides.most));
  const binding = readBinding(from["binding"], readLook);
  return {
    id,
    type: fresh.type,
    name: asText(from["name"]),
    x: Math.round(asNumber(from["x"], 0, -100_000, 100_000)),
    y: Math.round(asNumber(from["y"], 0, -100_000, 100_000)),
    width: side("width"),
    height: side("height"),
    locked: from["locked"] === true,
    group: asText(from["group"]),
    fontSize: asNumber(from["fontSize"], fresh.fontSize, fontSizes.least, fontSizes.most),
    fontFamily: asChoice(from["fontFamily"], fontFamilyNames, fresh.fontFamily),
    fontWeight: fontWeights.find((weight) => weight === from["fontWeight"]) ?? fresh.fontWeight,
    radius: asNumber(from["radius"], fresh.radius, 0, 1000),
    style: asChoice(from["style"], partStyles, fresh.style),
    align: asChoice(from["align"], alignments, fresh.align),
    look: readLook(from["look"]),
    ...(binding && { binding }),
  };
}
