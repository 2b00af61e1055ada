/**
 * What a message of a device looks like, with named places in it; the server understands the same. Messages are texts
 * with one character for each byte.
 */
import { bytesToHex } from "./content.ts";
import { byteArray, bytesOfHex, longestMessage } from "./messageCutter.ts";

export const patternForms = ["text", "hex"] as const;
export type PatternForm = (typeof patternForms)[number];

/** What is wrong with a pattern. */
export type PatternProblem =
  | "empty"
  | "tooLong"
  | "brace"
  | "placeName"
  | "placeTwice"
  | "placesTogether"
  | "hexDigits"
  | "placeLength"
  | "restNotLast";

/** A piece of a message that stands in a place. */
export interface Capture {
  /** Empty: a place without a name. */
  readonly place: string;
  /** What the value is made of: the bytes, or of the hexadecimal form a number's decimal digits or the rest's digits. */
  readonly text: string;
  /** Where it stands in the message. */
  readonly begin: number;
  readonly end: number;
}

export interface MessagePattern {
  readonly places: readonly string[];
  /** What stands in the places of a message that fits as a whole; nothing: it does not. */
  match(message: string): Capture[] | undefined;
}

export function isPattern(value: MessagePattern | PatternProblem): value is MessagePattern {
  return typeof value !== "string";
}

/** @param terminator  of the messages: at the end of the pattern it can be written or left out */
export function readPattern(form: PatternForm, pattern: string, terminator = ""): MessagePattern | PatternProblem {
  return form === "hex" ? readHex(pattern, terminator) : readText(pattern, terminator);
}

/** The UTF-8 bytes of a text. */
export function bytesOfText(text: string): string {
  return [...new TextEncoder().encode(text)].map((byte) => String.fromCharCode(byte)).join("");
}

/** The text of UTF-8 bytes, with a sign for what is none. */
export function textOfBytes(bytes: string): string {
  return new TextDecoder().decode(byteArray(bytes));
}

const placeName = /^[^\0-\x20\x7f{}:,]{1,40}$/u;

/** Takes the name of a place, or says what is wrong with it. */
function takeName(name: string, places: string[]): PatternProblem | undefined {
  if (!placeName.test(name)) return "placeName";
  if (places.includes(name)) return "placeTwice";
  places.push(name);
  return undefined;
}

function readText(pattern: string, terminator: string): MessagePattern | PatternProblem {
  if (bytesOfText(pattern).length > longestMessage + terminator.length) return "tooLong";
  const places: string[] = [];
  /** What stands before the first place and behind each. */
  const literals = [""];
  const names: string[] = [];
  for (let at = 0; at < pattern.length; ++at) {
    const character = pattern[at]!;
    const isBrace = character === "{" || character === "}";
    if (!isBrace || pattern[at + 1] === character) {
      literals[literals.length - 1] += character;
      if (isBrace) at += 1;
      continue;
    }
    const end = pattern.slice(at + 1).search(/[{}]/) + at + 1;
    if (character === "}" || end === at || pattern[end] === "{") return "brace";
    if (literals.length > 1 && literals.at(-1) === "") return "placesTogether";
    const name = pattern.slice(at + 1, end);
    const problem = name && takeName(name, places);
    if (problem) return problem;
    names.push(name);
    literals.push("");
    at = end;
  }
  const [begin = "", ...behind] = literals.map((literal, index) => {
    const bytes = bytesOfText(literal);
    const isLast = index === literals.length - 1;
    return isLast && terminator && bytes.endsWith(terminator) ? bytes.slice(0, -terminator.length) : bytes;
  });
  if (!begin && !behind.length) return "empty";
  return { places, match: (message: string) => matchText(message, begin, names, behind) };
}

function matchText(message: string, begin: string, names: string[], behind: string[]): Capture[] | undefined {
  if (!message.startsWith(begin)) return undefined;
  const captures: Capture[] = [];
  let at = begin.length;
  for (const [index, literal] of behind.entries()) {
    const end = literal ? message.indexOf(literal, at) : message.length;
    if (end < 0) return undefined;
    captures.push({ place: names[index]!, text: message.slice(at, end), begin: at, end });
    at = end + literal.length;
  }
  return at === message.length ? captures : undefined;
}

type Piece =
  | { readonly kind: "byte"; readonly byte: string }
  | { readonly kind: "any" }
  | { readonly kind: "rest"; readonly name: string }
  | {
      readonly kind: "number";
      readonly name: string;
      readonly bytes: number;
      readonly isLittleEndian: boolean;
      readonly isSigned: boolean;
    };

function sizeOf(piece: Piece): number {
  return piece.kind === "number" ? piece.bytes : piece.kind === "rest" ? 0 : 1;
}

function readHex(pattern: string, terminator: string): MessagePattern | PatternProblem {
  const places: string[] = [];
  const pieces: Piece[] = [];
  for (let at = 0; at < pattern.length;) {
    if (pattern[at] === " ") {
      at += 1;
      continue;
    }
    if (pieces.at(-1)?.kind === "rest") return "restNotLast";
    const pair = pattern.slice(at, at + 2);
    if (pattern[at] === "{") {
      const end = pattern.indexOf("}", at);
      if (end < 0) return "brace";
      const place = readPlace(pattern.slice(at + 1, end), places);
      if (typeof place === "string") return place;
      pieces.push(place);
      at = end + 1;
      continue;
    }
    if (pair === "??") pieces.push({ kind: "any" });
    else if (/^[0-9a-fA-F]{2}$/.test(pair)) pieces.push({ kind: "byte", byte: bytesOfHex(pair) });
    else return pattern[at] === "}" ? "brace" : "hexDigits";
    at += 2;
  }
  if (pieces.reduce((sum, one) => sum + sizeOf(one), 0) > longestMessage + terminator.length) return "tooLong";
  const tail = pieces.slice(-terminator.length || pieces.length);
  const endsSo = tail.map((one) => (one.kind === "byte" ? one.byte : "??")).join("") === terminator;
  const used = terminator && endsSo ? pieces.slice(0, -terminator.length) : pieces;
  if (!used.length) return "empty";
  return { places, match: (message: string) => matchHex(message, used) };
}

/** @param inside  what stands between the braces */
function readPlace(inside: string, places: string[]): Piece | PatternProblem {
  const [, name = "", form = ""] = /^([^:]*):?(.*)$/su.exec(inside) ?? [];
  const problem = takeName(name, places);
  if (problem) return problem;
  if (form === "*") return { kind: "rest", name };
  const [whole, bytes, order, sign] = /^([1-6])(le)?(s)?$/.exec(form) ?? [];
  if (!whole) return "placeLength";
  return {
    kind: "number",
    name,
    bytes: Number(bytes),
    isLittleEndian: order !== undefined,
    isSigned: sign !== undefined,
  };
}

function matchHex(message: string, pieces: readonly Piece[]): Capture[] | undefined {
  const captures: Capture[] = [];
  let at = 0;
  for (const piece of pieces) {
    const end = piece.kind === "rest" ? message.length : at + sizeOf(piece);
    const bytes = message.slice(at, end);
    if (end > message.length || (piece.kind === "byte" && bytes !== piece.byte)) return undefined;
    if (piece.kind === "rest") {
      captures.push({ place: piece.name, text: bytesToHex(byteArray(bytes)).replaceAll(" ", ""), begin: at, end });
    }
    if (piece.kind === "number") captures.push({ place: piece.name, text: numberText(piece, bytes), begin: at, end });
    at = end;
  }
  return at === message.length ? captures : undefined;
}

function numberText(piece: Extract<Piece, { kind: "number" }>, bytes: string): string {
  const digits = [...byteArray(bytes)];
  if (piece.isLittleEndian) digits.reverse();
  const number = digits.reduce((sum, byte) => sum * 256 + byte, 0);
  const range = 256 ** digits.length;
  return String(piece.isSigned && number >= range / 2 ? number - range : number);
}
