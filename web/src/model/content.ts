/**
 * A command's content and the bytes that the server makes from it. The rules are those of the server; one file of
 * vectors checks both. Nothing is ever truncated or padded: content that has no bytes is a fault.
 */
import { decodeGb18030, encodeGb18030 } from "./gb18030.ts";

/** asciiEncode */
export const encodings = { utf8: 0, oneByte: 1, gb18030: 2 } as const;

export type ContentFault =
  | "odd" // a run of hexadecimal digits of odd length
  | "digit" // no hexadecimal digit
  | "character" // the encoding doesn't have it
  | "surrogate" // half of a pair
  | "escape" // an escape that doesn't exist or isn't finished
  | "encoding"; // an asciiEncode that doesn't exist

/** What is wrong, and at which UTF-16 unit of the text, from 0. */
export interface Fault {
  readonly fault: ContentFault;
  readonly at: number;
}

export type Bytes = Uint8Array<ArrayBuffer>;

export function isFault<Value>(value: Value | Fault): value is Fault {
  return typeof value === "object" && value !== null && "fault" in value;
}

/** The bytes that go out for a stored content. */
export function contentToBytes(content: string, contentFormat: number, asciiEncode: number): Bytes | Fault {
  if (contentFormat !== 0) return hexToBytes(content);
  return textToBytes(content, asciiEncode);
}

function textToBytes(text: string, asciiEncode: number): Bytes | Fault {
  if (text === "") return new Uint8Array(0);
  let at = 0;
  const bytes: number[] = [];
  const utf8 = new TextEncoder();
  for (const character of text) {
    const code = character.codePointAt(0)!;
    if (code >= 0xd800 && code <= 0xdfff) return { fault: "surrogate", at };
    if (asciiEncode === encodings.utf8) {
      bytes.push(...utf8.encode(character));
    } else if (asciiEncode === encodings.oneByte) {
      if (code > 0xff) return { fault: "character", at };
      bytes.push(code);
    } else if (asciiEncode === encodings.gb18030) {
      const encoded = encodeGb18030(code);
      if (!encoded) return { fault: "character", at };
      bytes.push(...encoded);
    } else {
      return { fault: "encoding", at: 0 };
    }
    at += character.length;
  }
  return new Uint8Array(bytes);
}

const separator = /[ \t\r\n,;:-]/;

function hexToBytes(text: string): Bytes | Fault {
  const bytes: number[] = [];
  let at = 0;
  while (at < text.length) {
    if (separator.test(text[at]!)) {
      ++at;
      continue;
    }
    const start = at;
    const prefix = /^(?:0[xX]|\\[xX]|\$)/.exec(text.slice(at, at + 2))?.[0] ?? "";
    at += prefix.length;
    const digits = /^[0-9a-fA-F]*/.exec(text.slice(at))![0];
    at += digits.length;
    const suffix = !prefix && digits && /[hH]/.test(text[at] ?? "") ? 1 : 0;
    at += suffix;
    const endsHere = at >= text.length || separator.test(text[at]!) || /^(?:\\[xX]|\$)/.test(text.slice(at, at + 2));
    if (!digits || !endsHere) return { fault: "digit", at: digits ? at : start };
    if (digits.length % 2 === 1 && digits.length > 1) return { fault: "odd", at: start + prefix.length };
    for (let pair = 0; pair < digits.length; pair += 2) bytes.push(parseInt(digits.slice(pair, pair + 2), 16));
  }
  return new Uint8Array(bytes);
}

/** Pairs of capital digits with blanks between them: "1B 0D". */
export function bytesToHex(bytes: Bytes): string {
  return [...bytes].map((byte) => byte.toString(16).toUpperCase().padStart(2, "0")).join(" ");
}

/** One character for each byte: itself where it can be seen, otherwise a dot. */
export function bytesToVisible(bytes: Bytes): string {
  return [...bytes].map((byte) => (byte >= 0x20 && byte < 0x7f ? String.fromCharCode(byte) : "·")).join("");
}

/** The text that gives exactly these bytes, or nothing when there is none. */
export function bytesToText(bytes: Bytes, asciiEncode: number): string | undefined {
  const text = decode(bytes, asciiEncode);
  if (text === undefined) return undefined;
  const back = textToBytes(text, asciiEncode);
  return !isFault(back) && back.length === bytes.length && back.every((byte, at) => byte === bytes[at])
    ? text
    : undefined;
}

function decode(bytes: Bytes, asciiEncode: number): string | undefined {
  if (asciiEncode === encodings.oneByte) return Array.from(bytes, (byte) => String.fromCharCode(byte)).join("");
  if (asciiEncode === encodings.gb18030) return decodeGb18030(bytes);
  try {
    return new TextDecoder("utf-8", { fatal: true, ignoreBOM: true }).decode(bytes);
  } catch {
    return undefined;
  }
}
