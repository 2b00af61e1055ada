/** What went over an interface, as the server keeps it. */
import { type Bytes, bytesToHex, bytesToVisible } from "./content.ts";
import { asArray, asNumber, asObject, asText } from "./json.ts";

export interface TrafficEntry {
  readonly id: number;
  /** In ms since the beginning of 1970 (UTC). */
  readonly time: number;
  readonly isOut: boolean;
  readonly bytes: Bytes;
  /** There were more bytes. */
  readonly isCut: boolean;
  /** Of what was received: address and port of the device. */
  readonly peer: string;
  /** Of a command: why it was not sent; 0: it was. */
  readonly error: number;
  readonly errorText: string;
  readonly source: string;
  readonly component: number;
  readonly trigger: string;
  readonly command: string;
  readonly client: string;
}

export interface Traffic {
  readonly entries: readonly TrafficEntry[];
  /** Number of the last entry that the server has looked at. */
  readonly last: number;
  /** Something between what was asked for and what came is no longer kept. */
  readonly isMissed: boolean;
  /** The server keeps traffic at all. */
  readonly isKept: boolean;
  /** Until when the server writes it into a file, in ms since the beginning of 1970; 0: it does not. */
  readonly fileUntil: number;
}

const most = Number.MAX_SAFE_INTEGER;

export function readTraffic(value: unknown): Traffic {
  const from = asObject(value);
  return {
    entries: asArray(from["entries"])
      .map((one) => readEntry(asObject(one)))
      .filter((one) => one.id > 0),
    last: asNumber(from["last"], 0, 0, most),
    isMissed: from["missed"] === true,
    isKept: from["kept"] !== false,
    fileUntil: readFileUntil(from),
  };
}

/** Until when the server writes into a file, in ms since the beginning of 1970; 0: it does not. */
export function readFileUntil(value: unknown): number {
  return asNumber(asObject(value)["fileUntil"], 0, 0, most);
}

function readEntry(one: Record<string, unknown>): TrafficEntry {
  const pairs = asText(one["hex"]).match(/[0-9a-fA-F]{2}/g) ?? [];
  return {
    id: asNumber(one["id"], 0, 0, most),
    time: asNumber(one["time"], 0, 0, most),
    isOut: one["out"] === true,
    bytes: Uint8Array.from(pairs, (pair) => parseInt(pair, 16)),
    isCut: one["cut"] === true,
    peer: asText(one["peer"]),
    error: asNumber(one["error"], 0, 0, 0x7fffffff),
    errorText: asText(one["errorText"]),
    source: asText(one["source"]),
    component: asNumber(one["component"], 0, -0x80000000, 0x7fffffff),
    trigger: asText(one["trigger"]),
    command: asText(one["command"]),
    client: asText(one["client"]),
  };
}

/** What a reader wants to see. */
export interface TrafficFilter {
  readonly direction: "all" | "out" | "in";
  /** In the text, the digits (with or without blanks), or the name of the command; empty: everything. */
  readonly text: string;
}

export function isWanted(entry: TrafficEntry, { direction, text }: TrafficFilter): boolean {
  if (direction !== "all" && entry.isOut !== (direction === "out")) return false;
  const wanted = text.trim().toLowerCase();
  if (!wanted) return true;
  const hex = bytesToHex(entry.bytes).toLowerCase();
  const places = [bytesToVisible(entry.bytes).toLowerCase(), hex, entry.command.toLowerCase(), entry.peer];
  return places.some((place) => place.includes(wanted)) || hex.replaceAll(" ", "").includes(wanted);
}

/**
 * One line for each entry, for the clipboard and for files: time, direction, digits, text; of what was received the
 * device, of a command who sent it and why it did not go out.
 */
export function trafficText(entries: readonly TrafficEntry[]): string {
  return entries
    .map((one) => {
      const component = one.source === "component" ? `${one.component} ${one.trigger}` : one.source;
      const error = one.error ? `${one.error} ${one.errorText.trim()}` : "";
      const about = one.isOut ? [component, one.command, one.client, error] : [one.peer];
      return [
        new Date(one.time).toISOString(),
        one.isOut ? "out" : "in",
        bytesToHex(one.bytes) + (one.isCut ? " …" : ""),
        bytesToVisible(one.bytes),
        ...about,
      ]
        .join("\t")
        .trimEnd();
    })
    .map((line) => `${line}\n`)
    .join("");
}
