/** Cuts what a device sends into messages, as the server does. Bytes are texts with one character for each. */
import type { Bytes } from "./content.ts";

export type Framing =
  | { readonly kind: "terminator"; readonly hex: string }
  | { readonly kind: "length"; readonly bytes: number }
  | { readonly kind: "silence"; readonly ms: number };

export const framingKinds = ["terminator", "length", "silence"] as const;

/** Longest message, without its terminator. */
export const longestMessage = 4096;

export class MessageCutter {
  #held = "";
  #isDropping = false;
  readonly #terminator: string;

  constructor(readonly framing: Framing) {
    this.#terminator = framing.kind === "terminator" ? bytesOfHex(framing.hex) : "";
  }

  /** The messages that end with these bytes. A message that is too long is left out. */
  add(bytes: string): string[] {
    const { framing } = this;
    if (framing.kind === "silence") {
      this.#hold(bytes);
      return [];
    }
    return framing.kind === "length" ? this.#ofLength(bytes, framing.bytes) : this.#terminated(bytes);
  }

  /** Nothing has come for the time of the framing. */
  endBySilence(): string[] {
    const message = this.#isDropping ? "" : this.#held;
    this.#held = "";
    this.#isDropping = false;
    return message ? [message] : [];
  }

  #hold(bytes: string): void {
    this.#isDropping ||= this.#held.length + bytes.length > longestMessage;
    this.#held = this.#isDropping ? "" : this.#held + bytes;
  }

  #ofLength(bytes: string, length: number): string[] {
    const all = this.#held + bytes;
    const end = all.length - (all.length % length);
    this.#held = all.slice(end);
    return Array.from({ length: end / length }, (_, index) => all.slice(index * length, (index + 1) * length));
  }

  #terminated(bytes: string): string[] {
    if (!this.#terminator) return []; // its digits are being typed
    const parts = (this.#held + bytes).split(this.#terminator);
    const rest = parts.pop() ?? "";
    const ended = this.#isDropping ? parts.slice(1) : parts;
    if (parts.length) this.#isDropping = false;
    // Of a message that is too long only what may begin the terminator is kept.
    this.#isDropping ||= rest.length > longestMessage + this.#terminator.length - 1;
    this.#held = this.#isDropping ? rest.slice(rest.length - this.#terminator.length + 1) : rest;
    return ended.filter((one) => one !== "" && one.length <= longestMessage);
  }
}

/** The same bytes as an array, for what shows them. */
export function byteArray(bytes: string): Bytes {
  return Uint8Array.from(bytes, (byte) => byte.charCodeAt(0));
}

/** The bytes of hexadecimal digits, with or without blanks; of odd or other digits, none. */
export function bytesOfHex(digits: string): string {
  const pairs = digits.replaceAll(" ", "");
  if (!/^([0-9a-fA-F]{2})*$/.test(pairs)) return "";
  return (pairs.match(/../g) ?? []).map((pair) => String.fromCharCode(parseInt(pair, 16))).join("");
}
