/** What the interfaces are doing, as the server reports it. */
import { asArray, asNumber, asObject, asText } from "./json.ts";

const names = ["closed", "connecting", "open", "listening", "failed"] as const;
export type StateName = (typeof names)[number];

/** Times are in ms since the beginning of 1970 (UTC); 0: never. */
export interface InterfaceState {
  readonly nodeId: number;
  readonly state: StateName;
  /** When this state began. */
  readonly since: number;
  /** Of a TCP server: connected devices. */
  readonly peers: number;
  readonly bytesOut: number;
  readonly bytesIn: number;
  readonly commandsOut: number;
  readonly commandsFailed: number;
  /** When something was sent or received last. */
  readonly active: number;
  /** The last failure, which may be long over. */
  readonly lastError: { readonly code: number; readonly text: string; readonly time: number } | undefined;
}

/** By node id. What has no known state is left out. */
export function readInterfaceStates(value: unknown): ReadonlyMap<number, InterfaceState> {
  const states = new Map<number, InterfaceState>();
  for (const one of asArray(asObject(value)["interfaces"]).map(asObject)) {
    const state = names.find((name) => name === one["state"]);
    if (!state) continue;
    const count = (key: string) => asNumber(one[key], 0, 0, Number.MAX_SAFE_INTEGER);
    const error = asObject(one["lastError"]);
    const code = asNumber(error["code"], 0, 0, 0x7fffffff);
    const nodeId = asNumber(one["nodeId"], 0, -0x80000000, 0x7fffffff);
    states.set(nodeId, {
      nodeId,
      state,
      since: count("since"),
      peers: count("peers"),
      bytesOut: count("bytesOut"),
      bytesIn: count("bytesIn"),
      commandsOut: count("commandsOut"),
      commandsFailed: count("commandsFailed"),
      active: Math.max(count("lastOut"), count("lastIn")),
      lastError: code
        ? { code, text: asText(error["text"]), time: asNumber(error["time"], 0, 0, Number.MAX_SAFE_INTEGER) }
        : undefined,
    });
  }
  return states;
}

/** A number of bytes as one reads it: "340 B", "1.2 kB". */
export function bytesText(bytes: number): string {
  const units = ["B", "kB", "MB", "GB", "TB"];
  let at = 0;
  let shown = bytes;
  while (shown >= 999.5 && at < units.length - 1) {
    shown /= 1000;
    at += 1;
  }
  return `${at > 0 && shown < 9.95 ? shown.toFixed(1) : Math.round(shown)} ${units[at]!}`;
}
