/** The command editor's fields, and their meaning: a stored command, or the place of a fault. */
import { bytesToHex, bytesToText, type Bytes, contentToBytes, type Fault, isFault } from "../../model/content.ts";
import { escapeText, placeInNotation, splitTerminator, terminators, unescapeText } from "../../model/escapes.ts";
import { type Command, sampleContent } from "../../model/interactions.ts";
import { asObject } from "../../model/json.ts";
import type { SliderComponent } from "../../model/layout.ts";

export interface CommandFields {
  isText: boolean;
  /** Escapes in text, digits in hexadecimal. */
  notation: string;
  /** Of text: the terminating characters. */
  terminator: string;
  asciiEncode: number;
}

export function fieldsOf(command: Pick<Command, "content" | "contentFormat" | "asciiEncode">): CommandFields {
  const { content, contentFormat, asciiEncode } = command;
  if (contentFormat !== 0) return { isText: false, notation: content, terminator: "", asciiEncode };
  const { body, terminator } = splitTerminator(content);
  return { isText: true, notation: escapeText(body), terminator, asciiEncode };
}

const choiceKey = "command-choice";
const nameLength = 40;

/** The fields of a new command: empty, with format, ending and encoding as they were chosen last in this browser. */
export function newFields(storage: Pick<Storage, "getItem">): CommandFields {
  const fields: CommandFields = { isText: true, notation: "", terminator: "", asciiEncode: 0 };
  try {
    const kept = asObject(JSON.parse(storage.getItem(choiceKey) ?? "{}"));
    const terminator = terminators.find((one) => one === kept["terminator"]) ?? "";
    const asciiEncode = [0, 1, 2].find((one) => one === kept["asciiEncode"]) ?? 0;
    return { ...fields, isText: kept["isText"] !== false, terminator, asciiEncode };
  } catch {
    return fields; // what is kept there is not ours
  }
}

export function keepChoice(storage: Pick<Storage, "setItem">, fields: CommandFields): void {
  const { isText, terminator, asciiEncode } = fields;
  storage.setItem(choiceKey, JSON.stringify({ isText, terminator, asciiEncode }));
}

/** What an empty name stands for: the content as it is typed, in one line and not too long. */
export function nameOfContent(fields: CommandFields): string {
  const line = [...fields.notation.trim().replace(/\s+/g, " ")];
  return line.length > nameLength ? `${line.slice(0, nameLength - 1).join("")}…` : line.join("");
}

export interface Meaning {
  /** What is stored. */
  content: string;
  bytes: Bytes;
}

/**
 * The meaning of the fields. The place of a fault is a place in the notation.
 * @param slider  whose template this is, if it is one: the bytes are those of its middle position
 */
export function meaningOf(fields: CommandFields, slider?: SliderComponent): Meaning | Fault {
  const bytesOf = (content: string, contentFormat: number) =>
    contentToBytes(sampleContent({ content, contentFormat }, slider), contentFormat, fields.asciiEncode);
  if (!fields.isText) {
    const bytes = bytesOf(fields.notation, 1);
    return isFault(bytes) ? bytes : { content: fields.notation, bytes };
  }
  const body = unescapeText(fields.notation);
  if (isFault(body)) return body;
  const content = body + fields.terminator;
  const bytes = bytesOf(content, 0);
  if (isFault(bytes)) return { fault: bytes.fault, at: placeInNotation(fields.notation, bytes.at) };
  return { content, bytes };
}

/** The same bytes in the other notation, or nothing when it can't express them without loss. */
export function converted(fields: CommandFields): CommandFields | undefined {
  const meaning = meaningOf(fields);
  if (isFault(meaning)) return undefined;
  if (fields.isText) return { ...fields, isText: false, notation: bytesToHex(meaning.bytes), terminator: "" };
  const text = bytesToText(meaning.bytes, fields.asciiEncode);
  if (text === undefined) return undefined;
  return fieldsOf({ content: text, contentFormat: 0, asciiEncode: fields.asciiEncode });
}

/** Whether a text has characters above U+007F that were typed as \x: in UTF-8 they become two bytes. */
export function hasWideEscapes(fields: CommandFields): boolean {
  return fields.isText && fields.asciiEncode === 0 && /(?<!\\)(?:\\\\)*\\x[89a-fA-F][0-9a-fA-F]/.test(fields.notation);
}
