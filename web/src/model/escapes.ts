/**
 * The notation of the command editor: \r \n \t \0 \\ \xHH \uHHHH stand for single characters. What is stored
 * has no escapes; it holds the characters themselves.
 */
import type { Fault } from "./content.ts";

const letters: Record<string, string> = { r: "\r", n: "\n", t: "\t", "0": "\0", "\\": "\\" };
const names = new Map(Object.entries(letters).map(([letter, character]) => [character, `\\${letter}`]));

/** The characters of the notation, or the place of an invalid escape. */
export function unescapeText(notation: string): string | Fault {
  let text = "";
  for (let at = 0; at < notation.length; ++at) {
    if (notation[at] !== "\\") {
      text += notation[at];
      continue;
    }
    const letter = notation[at + 1] ?? "";
    const count = letter === "x" ? 2 : letter === "u" ? 4 : 0;
    if (count === 0) {
      const character = letters[letter];
      if (character === undefined) return { fault: "escape", at };
      text += character;
      at += 1;
      continue;
    }
    const digits = notation.slice(at + 2, at + 2 + count);
    if (digits.length < count || !/^[0-9a-fA-F]+$/.test(digits)) return { fault: "escape", at };
    text += String.fromCharCode(parseInt(digits, 16));
    at += 1 + count;
  }
  return text;
}

/** The notation of a text; unescapeText gives back the same text. */
export function escapeText(text: string): string {
  return [...text]
    .map((character) => {
      const code = character.codePointAt(0)!;
      const hidden = code < 0x20 || (code >= 0x7f && code < 0xa0);
      const unseen = (code >= 0xd800 && code <= 0xdfff) || code === 0xfeff || (code >= 0x200b && code <= 0x200f);
      const name = names.get(character);
      if (name) return name;
      if (hidden) return `\\x${code.toString(16).toUpperCase().padStart(2, "0")}`;
      return unseen ? `\\u${code.toString(16).toUpperCase().padStart(4, "0")}` : character;
    })
    .join("");
}

/** A stored content as the command form shows it: hexadecimal digits as they are, text with escapes. */
export function notationOf({ content, contentFormat }: { content: string; contentFormat: number }): string {
  return contentFormat === 0 ? escapeText(content) : content;
}

/** The terminators of a text command that the editor offers. */
export const terminators = ["", "\r", "\n", "\r\n", "\0"] as const;

/** Content without its terminator, and the terminator. */
export function splitTerminator(content: string): { body: string; terminator: string } {
  const terminator = ["\r\n", "\r", "\n", "\0"].find((end) => content.endsWith(end)) ?? "";
  return { body: content.slice(0, content.length - terminator.length), terminator };
}

/**
 * The place in the notation of a character of the text: faults of an encoding are found in the text, and shown in what
 * the author typed.
 */
export function placeInNotation(notation: string, at: number): number {
  let units = 0;
  for (let place = 0; place < notation.length; ++units) {
    if (units === at) return place;
    const letter = notation[place] === "\\" ? notation[place + 1] : "";
    place += letter === "x" ? 4 : letter === "u" ? 6 : letter ? 2 : 1;
  }
  return notation.length;
}
