/** Lists of the commands that a device understands, by the name of its interface; a part of the layout document. */
import { asArray, asNumber, asObject, asText } from "./json.ts";
import type { Layout } from "./layout.ts";

export interface DeviceCommand {
  readonly name: string;
  /** As in a command of a component: the characters themselves, or hexadecimal digits. */
  readonly content: string;
  /** 0 text, 1 hexadecimal. */
  readonly contentFormat: number;
  /** Of text: 0 UTF-8, 1 one byte per character, 2 GB18030. */
  readonly asciiEncode: number;
}

export interface DeviceList {
  readonly interfaceName: string;
  readonly commands: readonly DeviceCommand[];
}

/** As many commands fit into a list. */
export const mostDeviceCommands = 2000;

/** The lists in a stored document. Entries that can't be used, and second lists of a device, are left out. */
export function readDevices(value: unknown): DeviceList[] {
  const lists = new Map<string, DeviceList>();
  for (const one of asArray(value).map(asObject)) {
    const interfaceName = asText(one["interfaceName"]);
    const commands = asArray(one["commands"]).flatMap((command) => readDeviceCommand(command) ?? []);
    if (interfaceName && commands.length && !lists.has(interfaceName)) {
      lists.set(interfaceName, { interfaceName, commands: commands.slice(0, mostDeviceCommands) });
    }
  }
  return [...lists.values()];
}

function readDeviceCommand(value: unknown): DeviceCommand | undefined {
  const from = asObject(value);
  const [name, content] = [asText(from["name"]), asText(from["content"])];
  if (!name || !content) return undefined;
  const contentFormat = asNumber(from["contentFormat"], 0, 0, 1);
  return { name, content, contentFormat, asciiEncode: asNumber(from["asciiEncode"], 0, 0, 2) };
}

/** The list of the interface of this name; empty when it has none. */
export function deviceCommands(layout: Layout, interfaceName: string): readonly DeviceCommand[] {
  return layout.devices?.find((one) => one.interfaceName === interfaceName)?.commands ?? [];
}

/** The layout with these lists. Without any it is the same as one that never had some. */
export function withDevices({ devices: _, ...layout }: Layout, devices: readonly DeviceList[]): Layout {
  return devices.length ? { ...layout, devices } : layout;
}

/** The layout with another list for one interface; an empty one removes it. */
export function withDeviceCommands(layout: Layout, interfaceName: string, commands: readonly DeviceCommand[]): Layout {
  const list = commands.length ? [{ interfaceName, commands }] : [];
  const devices = layout.devices ?? [];
  const at = devices.findIndex((one) => one.interfaceName === interfaceName);
  const place = at < 0 ? devices.length : at;
  return withDevices(layout, [...devices.slice(0, place), ...list, ...devices.slice(place + 1)]);
}

/** The layout after an interface got another name: its list goes along, unless the new name has one. */
export function withRenamedDevice(layout: Layout, from: string, to: string): Layout {
  const commands = deviceCommands(layout, from);
  if (from === to || !commands.length || deviceCommands(layout, to).length) return layout;
  return withDeviceCommands(withDeviceCommands(layout, from, []), to, commands);
}

/** The layout with the lists of another one for those interfaces that have none. */
export function withMissingDevices(layout: Layout, from: Layout): Layout {
  const missing = (from.devices ?? []).filter((one) => !deviceCommands(layout, one.interfaceName).length);
  return withDevices(layout, [...(layout.devices ?? []), ...missing]);
}
