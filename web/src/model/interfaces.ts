/** Interfaces: the ways to the equipment, as the server lists and accepts them. */
import { asArray, asNumber, asObject, asText, isObject } from "./json.ts";

export const netModes = ["TCP_Client", "TCP_Server", "UDP"] as const;
export type NetMode = (typeof netModes)[number];
export const parities = ["None", "Odd", "Even", "Mark", "Space"] as const;
export const baudRates = [1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400];

export interface NetInfo {
  netPortName: string;
  netMode: NetMode;
  ipAddress: string;
  port: number;
  dstIpAddress: string;
  dstPort: number;
}

export interface SerialInfo {
  comName: string;
  comPort: string;
  baudRate: number;
  wordLength: number;
  parity: (typeof parities)[number];
  stopBits: number;
}

export type Interface =
  | { nodeId: number; controlType: "netPortInfo"; info: NetInfo }
  | { nodeId: number; controlType: "comInfo"; info: SerialInfo };

export const newNetInfo: NetInfo = {
  netPortName: "",
  netMode: "TCP_Client",
  ipAddress: "",
  port: 0,
  dstIpAddress: "",
  dstPort: 4001,
};
export const newSerialInfo: SerialInfo = {
  comName: "",
  comPort: "",
  baudRate: 9600,
  wordLength: 8,
  parity: "None",
  stopBits: 1,
};

const int32 = 0x7fffffff;

/** The interfaces of the server's list, in its order. */
export function readInterfaces(value: unknown): Interface[] {
  return asArray(asObject(value)["configList"])
    .filter(isObject)
    .flatMap((one): Interface[] => {
      const nodeId = asNumber(one["nodeId"], 0, -int32 - 1, int32);
      if (one["controlType"] === "comInfo") {
        return [{ nodeId, controlType: "comInfo", info: { ...newSerialInfo, ...(one["comInfo"] as SerialInfo) } }];
      }
      const { netPortName, netMode, ipAddress, port, dstIpAddress, dstPort } = {
        ...newNetInfo,
        ...(one["netPortInfo"] as NetInfo),
      };
      const info = { netPortName, netMode, ipAddress, port, dstIpAddress, dstPort };
      return [{ nodeId, controlType: "netPortInfo", info }];
    });
}

export function interfaceName(one: Interface): string {
  return one.controlType === "comInfo" ? one.info.comName : one.info.netPortName;
}

/** The other end in one line: "10.0.0.7:4352", ":5000" for a listener, "COM5, 9600 8N1". */
export function interfaceAddress(one: Interface): string {
  if (one.controlType === "comInfo") {
    const { comPort, baudRate, wordLength, parity, stopBits } = one.info;
    return `${comPort}, ${baudRate} ${wordLength}${parity[0] ?? "?"}${stopBits}`;
  }
  const { netMode, ipAddress, port, dstIpAddress, dstPort } = one.info;
  if (netMode === "TCP_Server") return `${bracketed(ipAddress)}:${port}`;
  return `${bracketed(dstIpAddress)}:${dstPort}`;
}

function bracketed(address: string): string {
  return address.includes(":") ? `[${address}]` : address;
}

/** The key of a field that can't be valid, before the server is asked. */
export type FieldFault = "empty" | "port" | "address" | "addressPort" | "stopBits";

/** An address typed or pasted together with its port, as its two parts; nothing when it has none. */
export function splitAddress(text: string): { address: string; port: number } | undefined {
  const found = /^([^:]+|\[[^\]]+\]):(\d{1,5})$/.exec(text.trim());
  return found ? { address: found[1]!.replace(/^\[|\]$/g, ""), port: Number(found[2]) } : undefined;
}

export function checkNetInfo(info: NetInfo): Partial<Record<keyof NetInfo, FieldFault>> {
  const faults: Partial<Record<keyof NetInfo, FieldFault>> = {};
  if (!info.netPortName.trim()) faults.netPortName = "empty";
  const wrongPort = (port: number, least: number) => !Number.isInteger(port) || port < least || port > 65535;
  const isServer = info.netMode === "TCP_Server";
  if (wrongPort(info.port, isServer ? 1 : 0)) faults.port = "port";
  if (!isServer) {
    if (wrongPort(info.dstPort, 1)) faults.dstPort = "port";
    if (!info.dstIpAddress.trim()) faults.dstIpAddress = "empty";
  }
  for (const field of ["dstIpAddress", "ipAddress"] as const) {
    const address = info[field].trim();
    if (/[\s/]/.test(address)) faults[field] = "address";
    else if (/^[^:]*:\d*$|\]:/.test(address)) faults[field] = "addressPort";
  }
  return faults;
}

export function checkSerialInfo(info: SerialInfo): Partial<Record<keyof SerialInfo, FieldFault>> {
  const faults: Partial<Record<keyof SerialInfo, FieldFault>> = {};
  if (!info.comName.trim()) faults.comName = "empty";
  if (!info.comPort.trim()) faults.comPort = "empty";
  if (!Number.isInteger(info.baudRate) || info.baudRate < 1) faults.baudRate = "empty";
  if ((info.stopBits === 1.5) !== (info.wordLength === 5) && info.stopBits !== 1) faults.stopBits = "stopBits";
  return faults;
}

/** The interface in a record of an exported file, or nothing when it is none. */
export function readInterface(value: unknown): Interface | undefined {
  const one = readInterfaces({ configList: [value] })[0];
  return one && interfaceName(one) && asText(interfaceName(one)) ? one : undefined;
}
