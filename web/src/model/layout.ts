/**
 * The layout document: pages and the components on them. The server stores it unchanged; its format belongs to this
 * application. `readLayout` is the only way in, so that the rest can trust every field.
 */
import type { Binding } from "./readBinding.ts";
import type { Block } from "./readBlocks.ts";
import type { DeviceList } from "./devices.ts";
import { newComponentId, newId } from "./ids.ts";
import { defaultOptions, type PanelOptions } from "./panelOptions.ts";
import type { PhoneLayout, PhonePlace } from "./phoneLayout.ts";
import type { ProjectTheme } from "./projectTheme.ts";

/** The version that is written. A document with a higher one is refused, see readLayout. */
export const layoutVersion = 1;

export const componentTypes = [
  "button",
  "switch",
  "slider",
  "text",
  "image",
  "link",
  "clock",
  "group",
  "lamp",
  "gauge",
] as const;
export type ComponentType = (typeof componentTypes)[number];

/** When a button sends: on release inside its box, on press, on both, repeatedly, or after a long press. */
export const pressModes = ["click", "press", "pressRelease", "repeat", "long"] as const;
export type PressMode = (typeof pressModes)[number];

export const alignments = ["left", "center", "right"] as const;
export type TextAlignment = (typeof alignments)[number];
/** The shipped families of type; empty: the system's. */
export const fontFamilyNames = ["", "sans", "condensed", "mono"] as const;
export type FontFamily = (typeof fontFamilyNames)[number];
/** Weights of type as in CSS; 0: that of the component's kind. */
export const fontWeights = [0, 400, 500, 700] as const;
export type FontWeight = (typeof fontWeights)[number];
export const imageFits = ["contain", "cover", "fill"] as const;
export type ImageFit = (typeof imageFits)[number];
export const clockForms = ["time", "timeSeconds", "date", "dateTime"] as const;
export type ClockForm = (typeof clockForms)[number];

/**
 * Where a panel shows a page: listed in its bar, only by links and by its address, over the page of a link, or above or
 * below all pages of the first two kinds.
 */
export const pagePlaces = ["bar", "hidden", "popup", "header", "footer"] as const;
export type PagePlace = (typeof pagePlaces)[number];

/** Looks that a component takes from the theme; its own colours go over them. */
export const partStyles = ["", "primary", "danger", "quiet", "tile"] as const;
export type PartStyle = (typeof partStyles)[number];

/** The look of a component in one state. An empty field means that of the theme, or that of the normal look. */
export interface Look {
  text: string;
  fill: string;
  color: string;
  border: string;
  /** A name or a path, see icons.ts. */
  icon: string;
  material: string;
}

export const emptyLook: Look = { text: "", fill: "", color: "", border: "", icon: "", material: "" };

/** What components of all kinds have. */
interface Common<Type extends ComponentType> {
  readonly id: number;
  readonly type: Type;
  /** Name for the author's lists; empty: they show the text. */
  readonly name: string;
  readonly x: number;
  readonly y: number;
  readonly width: number;
  readonly height: number;
  readonly locked: boolean;
  /** Components with the same text here are selected and moved as one; empty: none. */
  readonly group: string;
  readonly fontSize: number;
  readonly fontFamily: FontFamily;
  readonly fontWeight: FontWeight;
  readonly radius: number;
  readonly align: TextAlignment;
  readonly style: PartStyle;
  readonly look: Look;
  /** How it shows what devices say; absent: not at all. */
  readonly binding?: Binding;
}

/** Of what can ask the operator before it sends. */
interface Asking {
  /** The question; empty: none is asked, unless a page asks. */
  readonly confirm: string;
  /** Id of the pop-up page that asks instead of the text; empty: none. */
  readonly confirmPage: string;
}

export interface ButtonComponent extends Common<"button">, Asking {
  /** The look while it is held. */
  readonly activeLook: Look;
  readonly mode: PressMode;
  /** Pause between two repetitions, in ms. */
  readonly interval: number;
  /** How long a long press has to last, in ms. */
  readonly hold: number;
}

export interface SwitchComponent extends Common<"switch">, Asking {
  /** The look while it is on. */
  readonly activeLook: Look;
}

export interface SliderComponent extends Common<"slider">, Asking {
  /** Number of positions, and the numbers of the first and the last. */
  readonly steps: number;
  readonly min: number;
  readonly max: number;
  readonly vertical: boolean;
  /** Whether it sends while it is moved, and not only at the end. */
  readonly live: boolean;
}

export interface ImageComponent extends Common<"image"> {
  /** How the picture fills the box. */
  readonly fit: ImageFit;
}

/** Target of a link that closes its pop-up; on other pages it leads to the page before. */
export const backTarget = "back";

/** Target of a link on a pop-up that asks before something is sent: sends it. */
export const confirmTarget = "confirm";

export interface LinkComponent extends Common<"link"> {
  /** Id of the page that it leads to, `backTarget` or `confirmTarget`; empty: none. */
  readonly target: string;
}

export interface ClockComponent extends Common<"clock"> {
  readonly clock: ClockForm;
}

/** Shows a number between two others. */
export interface GaugeComponent extends Common<"gauge"> {
  readonly min: number;
  readonly max: number;
}

export type Component =
  | ButtonComponent
  | SwitchComponent
  | SliderComponent
  | Common<"text">
  | ImageComponent
  | LinkComponent
  | ClockComponent
  | Common<"group">
  | Common<"lamp">
  | GaugeComponent;

export type AskingComponent = ButtonComponent | SwitchComponent | SliderComponent;

/** The component of one kind. */
export type ComponentOf<Type extends ComponentType> = Extract<Component, { readonly type: Type }>;

/** The part that all kinds share, of a component whose kind is not looked at. */
export type CommonPart = Common<ComponentType>;

export interface Page {
  readonly id: string;
  readonly name: string;
  readonly width: number;
  readonly height: number;
  /** Colour; empty: the theme's. */
  readonly background: string;
  /** Id of a material behind the components; empty: none. */
  readonly material: string;
  readonly place: PagePlace;
  /** Of a pop-up: whether a touch beside it closes it. */
  readonly closesOutside: boolean;
  /** Whether a panel shows it without header and footer, as a start screen. */
  readonly isBare: boolean;
  /** In drawing order: the last one lies on top. */
  readonly components: readonly Component[];
  /** Where the components stand on a phone held upright; absent: as on other screens. */
  readonly phone?: PhoneLayout;
}

export interface Layout {
  /** Id of the page that a panel shows first; empty: the first page. */
  readonly startPage: string;
  readonly pages: readonly Page[];
  readonly panel: PanelOptions;
  /** What the devices understand; absent: nothing is listed. */
  readonly devices?: readonly DeviceList[];
  /** The look of all pages; absent: that of the browser, light or dark. */
  readonly theme?: ProjectTheme;
  /** Colours of the project, #rrggbb or #rrggbbaa; absent: none. */
  readonly palette?: readonly string[];
  /** The author's own blocks; absent: none. */
  readonly blocks?: readonly Block[];
}

export const emptyLayout: Layout = { startPage: "", pages: [], panel: defaultOptions };

/** Smallest and largest side of a page and of a component, in px. A footer can be as low as a line of text. */
export const pageSides = { least: 40, most: 8000 };
export const componentSides = { least: 8, most: 8000 };
export const fontSizes = { least: 6, most: 400 };

/** Limits of a slider's positions: each has a trigger of its own in the stored document. */
export const sliderSteps = { least: 2, most: 201 };

const noQuestion: Asking = { confirm: "", confirmPage: "" };

const sizes: Record<ComponentType, [number, number]> = {
  button: [160, 80],
  switch: [240, 80],
  slider: [320, 80],
  text: [240, 48],
  image: [240, 160],
  link: [160, 80],
  clock: [200, 64],
  group: [400, 280],
  lamp: [200, 48],
  gauge: [320, 80],
};

/** A new component of its type's usual size at this place. */
export function newComponent<Type extends ComponentType>(
  type: Type,
  x: number,
  y: number,
  text?: string,
): ComponentOf<Type>;
export function newComponent(type: ComponentType, x: number, y: number, text = ""): Component {
  const [width, height] = sizes[type];
  const common: CommonPart = {
    id: newComponentId(),
    type,
    name: "",
    x,
    y,
    width,
    height,
    locked: false,
    group: "",
    fontSize: type === "clock" ? 32 : 20,
    fontFamily: "",
    fontWeight: 0,
    radius: 14,
    align: type === "text" || type === "lamp" ? "left" : "center",
    style: "",
    look: { ...emptyLook, text },
  };
  switch (type) {
    case "button":
      return { ...common, type, activeLook: emptyLook, mode: "click", ...noQuestion, interval: 300, hold: 800 };
    case "switch":
      return { ...common, type, activeLook: emptyLook, ...noQuestion };
    case "slider":
      return { ...common, type, ...noQuestion, steps: 11, min: 0, max: 100, vertical: false, live: false };
    case "image":
      return { ...common, type, fit: "contain" };
    case "link":
      return { ...common, type, target: "" };
    case "clock":
      return { ...common, type, clock: "time" };
    case "gauge":
      return { ...common, type, min: 0, max: 100 };
    case "text":
    case "group":
    case "lamp":
      return { ...common, type };
  }
}

export function newPage(name: string, width = 1280, height = 800): Page {
  return {
    id: newId("p"),
    name,
    width,
    height,
    background: "",
    material: "",
    place: "bar",
    closesOutside: true,
    isBare: false,
    components: [],
  };
}

/** A copy in which all ids are new, and for each old component id the new one. */
export function copyPage(page: Page, name: string): { page: Page; ids: Map<number, number> } {
  const { components, ids } = copyComponents(page.components);
  const copy = { ...page, id: newId("p"), name, components };
  if (!page.phone) return { page: copy, ids };
  const places: Record<number, PhonePlace> = {};
  for (const [id, place] of Object.entries(page.phone.places)) places[ids.get(Number(id)) ?? 0] = place;
  return { page: { ...copy, phone: { ...page.phone, places } }, ids };
}

/** Copies with new ids and groups, and for each old component id the new one. */
export function copyComponents(components: readonly Component[]): {
  components: Component[];
  ids: Map<number, number>;
} {
  const ids = new Map<number, number>();
  const groups = new Map<string, string>();
  const copies = components.map((component) => {
    const id = newComponentId();
    ids.set(component.id, id);
    if (component.group && !groups.has(component.group)) groups.set(component.group, newId("g"));
    return { ...component, id, group: groups.get(component.group) ?? "" };
  });
  return { components: copies, ids };
}

export function allComponents(layout: Layout): Component[] {
  return layout.pages.flatMap((page) => page.components);
}

export function isActive(type: ComponentType): boolean {
  return type === "button" || type === "switch" || type === "slider" || type === "link";
}

/** Whether the operator is asked before it sends. What sends while it is held asks nothing. */
export function asks(component: Component): component is AskingComponent {
  return canAsk(component) && (component.confirm !== "" || component.confirmPage !== "");
}

export function canAsk(component: Component): component is AskingComponent {
  if (component.type === "button") return component.mode !== "repeat" && component.mode !== "pressRelease";
  return component.type === "switch" || component.type === "slider";
}

/** Whether a component has a second look, for the time while it is held or on. */
export function hasStates(component: Component): component is ButtonComponent | SwitchComponent {
  return component.type === "button" || component.type === "switch";
}

/** The looks of all states of a component. */
export function looksOf(component: Component): Look[] {
  const looks = hasStates(component) ? [component.look, component.activeLook] : [component.look];
  return component.binding ? [...looks, ...component.binding.states.map((one) => one.look)] : looks;
}

/** The name of a component in the author's lists. */
export function componentTitle(component: Component): string {
  return component.name || (looksOf(component).find((look) => look.text)?.text ?? "");
}
