/**
 * The lock of the author's screens, as the layout document keeps it. It keeps curious hands away, and nobody else: the
 * routes of the server, by which the document itself can be read and written, don't ask for it.
 */
import { asObject, asText } from "./json.ts";

export interface Lock {
  /** In hexadecimal digits. */
  readonly salt: string;
  /** PBKDF2 (HMAC, SHA-256) of the PIN, in hexadecimal digits. */
  readonly hash: string;
  /** How often it was hashed. */
  readonly rounds: number;
}

/** Bytes of salt and hash. */
export const lockSizes = { salt: 16, hash: 32 } as const;
/** More would make the screens wait too long for a document that is broken. */
const mostRounds = 1_000_000;

/** Digits in a PIN. */
export const pinLengths = { least: 4, most: 12 } as const;

export function isPin(text: string): boolean {
  return /^[0-9]*$/.test(text) && text.length >= pinLengths.least && text.length <= pinLengths.most;
}

/** The stored lock; nothing when there is none, or one that no PIN could open. */
export function readLock(value: unknown): Lock | undefined {
  const from = asObject(value);
  const [salt, hash, rounds] = [asText(from["salt"]), asText(from["hash"]), from["rounds"]];
  const isBytes = (text: string, size: number) => text.length === 2 * size && /^[0-9a-f]*$/.test(text);
  const isCount = typeof rounds === "number" && Number.isInteger(rounds) && rounds > 0 && rounds <= mostRounds;
  return isBytes(salt, lockSizes.salt) && isBytes(hash, lockSizes.hash) && isCount ? { salt, hash, rounds } : undefined;
}
