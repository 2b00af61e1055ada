/** The interactions document: which commands belong to which component and trigger. The server reads it too. */
import { type Component, isActive, type SliderComponent } from "./layout.ts";
import { asArray, asNumber, asObject, asText, isObject } from "./json.ts";

export type ControlType = "comInfo" | "netPortInfo";

export interface Command {
  /** Node id of the interface. */
  readonly portIndex: number;
  readonly controlType: ControlType;
  readonly interfaceName: string;
  readonly commandName: string;
  /** The characters themselves, or hexadecimal digits. */
  readonly content: string;
  /** 0 text, 1 hexadecimal. */
  readonly contentFormat: number;
  /** Of text: 0 UTF-8, 1 one byte per character, 2 GB18030. */
  readonly asciiEncode: number;
}

export interface ComponentCommands {
  /** Lists in sending order, by trigger. */
  readonly triggers: Readonly<Record<string, readonly Command[]>>;
  /** Of a slider: the list from which the lists of all positions are made; see expandTemplate. */
  readonly template?: readonly Command[];
}

/** By component id. */
export type Interactions = Readonly<Record<number, ComponentCommands>>;

/** Placeholder in a slider's template for the position's number. */
const placeholder = /\{value(?::(\d))?\}/g;

/** The triggers that a component can fire, in the order in which they are shown. */
export function triggersOf(component: Component): string[] {
  switch (component.type) {
    case "switch":
      return ["on", "off"];
    case "slider":
      return Array.from({ length: component.steps }, (_, position) => sliderTrigger(position));
    case "button":
      if (component.mode === "pressRelease") return ["press", "release"];
      return [component.mode === "long" ? "longPress" : component.mode];
    default:
      return [];
  }
}

export function sliderTrigger(position: number): string {
  return `position${position}`;
}

/** The position in the middle of a slider, where the author sees it. */
export function middlePosition(component: SliderComponent): number {
  return Math.floor(component.steps / 2);
}

/** The number that a slider shows at a position. */
export function sliderValue(component: SliderComponent, position: number): number {
  const span = component.max - component.min;
  const value = component.min + (span * position) / Math.max(1, component.steps - 1);
  return Math.round(value * 100) / 100;
}

/** The commands of each position. `{value}` is the position's number, `{value:3}` that number with three digits. */
export function expandTemplate(component: SliderComponent, template: readonly Command[]): ComponentCommands {
  const triggers: Record<string, Command[]> = {};
  for (let position = 0; position < component.steps; ++position) {
    triggers[sliderTrigger(position)] = template.map((command) => ({
      ...command,
      content: contentAt(component, position, command),
    }));
  }
  return { triggers, template };
}

type Content = Pick<Command, "content" | "contentFormat">;

function contentAt(component: SliderComponent, position: number, { content, contentFormat }: Content): string {
  const value = sliderValue(component, position);
  return content.replace(placeholder, (_, digits?: string) => paddedValue(value, digits, contentFormat));
}

/** The content as it goes out from the slider's middle position; without a slider, as it stands. */
export function sampleContent(template: Content, slider: SliderComponent | undefined): string {
  return slider ? contentAt(slider, middlePosition(slider), template) : template.content;
}

/** A content of a template with a number of any position, to see whether it has bytes. */
export function withoutPlaceholders({ content, contentFormat }: Content): string {
  return content.replace(placeholder, contentFormat ? "00" : "0");
}

function paddedValue(value: number, digits: string | undefined, contentFormat: number): string {
  const whole = Math.round(value);
  if (contentFormat !== 0) return (whole & 0xff).toString(16).toUpperCase().padStart(2, "0");
  if (!digits) return String(value);
  return (whole < 0 ? "-" : "") + String(Math.abs(whole)).padStart(Number(digits), "0");
}

/** The content of the stored document. Unusable parts are left out, as the server leaves them out. */
export function readInteractions(value: unknown): Interactions {
  const info = asObject(asObject(value)["componentInteractionInfo"]);
  const result: Record<number, ComponentCommands> = {};
  for (const component of asArray(info["componentArr"]).filter(isObject)) {
    const id = component["componentId"];
    if (typeof id !== "number" || !Number.isInteger(id)) continue;
    const triggers: Record<string, Command[]> = {};
    for (const interaction of asArray(component["interactionArr"]).filter(isObject)) {
      const trigger = asText(interaction["triggerType"]);
      if (trigger) triggers[trigger] = readCommands(interaction["commandArr"]);
    }
    const template = component["template"];
    result[id] = Array.isArray(template) ? { triggers, template: readCommands(template) } : { triggers };
  }
  return result;
}

function readCommands(value: unknown): Command[] {
  return asArray(value).flatMap((one) => readCommand(one) ?? []);
}

export function readCommand(value: unknown): Command | undefined {
  const from = asObject(value);
  const controlType = from["controlType"];
  if (controlType !== "comInfo" && controlType !== "netPortInfo") return undefined;
  const content = asObject(from[controlType])["content"];
  if (typeof content !== "string" || typeof from["portIndex"] !== "number") return undefined;
  return {
    portIndex: from["portIndex"],
    controlType,
    content,
    interfaceName: asText(from["interfaceName"]) || asText(from["interFaceName"]),
    commandName: asText(from["commandName"]),
    contentFormat: asNumber(from["contentFormat"], 0, 0, 1),
    asciiEncode: asNumber(from["asciiEncode"], 0, 0, 2),
  };
}

export function writeCommand({ content, ...command }: Command): object {
  return { ...command, [command.controlType]: { content } };
}

/** The document of these components; commands of others, and of triggers that they don't have, are left out. */
export function writeInteractions(interactions: Interactions, components: readonly Component[]): object {
  const componentArr = components
    .filter(({ type }) => isActive(type))
    .flatMap((component) => {
      const one = interactions[component.id];
      if (!one) return [];
      const { triggers } = component.type === "slider" && one.template ? expandTemplate(component, one.template) : one;
      const interactionArr = triggersOf(component)
        .filter((triggerType) => triggers[triggerType]?.length)
        .map((triggerType) => ({ triggerType, commandArr: triggers[triggerType]!.map(writeCommand) }));
      if (!interactionArr.length && !one.template?.length) return [];
      const template = one.template && { template: one.template.map(writeCommand) };
      return [{ componentId: component.id, interactionArr, ...template }];
    });
  return { componentInteractionInfo: { componentArr } };
}

/** The lists of a component, its template among them. */
export function commandLists(one: ComponentCommands | undefined): (readonly Command[])[] {
  return one ? [...Object.values(one.triggers), ...(one.template ? [one.template] : [])] : [];
}

/** All lists with every command replaced by the result of `change`, or dropped if that is nothing. */
export function mapCommands(
  interactions: Interactions,
  change: (command: Command) => Command | undefined,
): Interactions {
  const mapList = (list: readonly Command[]) => list.flatMap((command) => change(command) ?? []);
  const result: Record<number, ComponentCommands> = {};
  for (const [id, one] of Object.entries(interactions)) {
    const triggers: Record<string, readonly Command[]> = {};
    for (const [trigger, list] of Object.entries(one.triggers)) triggers[trigger] = mapList(list);
    result[Number(id)] = one.template ? { triggers, template: mapList(one.template) } : { triggers };
  }
  return result;
}

/** How many commands name each interface, by node id. A template counts once, not for each position. */
export function interfaceUses(interactions: Interactions): Map<number, number> {
  const uses = new Map<number, number>();
  for (const one of Object.values(interactions)) {
    const lists = one.template ? [one.template] : Object.values(one.triggers);
    for (const command of lists.flat()) uses.set(command.portIndex, (uses.get(command.portIndex) ?? 0) + 1);
  }
  return uses;
}
