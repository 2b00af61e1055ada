/** How what stands in a place of a message becomes a named value, as the server does it. */
import { textOfBytes } from "./messagePattern.ts";

export interface ValueRule {
  readonly place: string;
  readonly name: string;
  readonly type: "text" | "number";
  readonly scale: number;
  readonly offset: number;
  /** Texts that are replaced as a whole, before anything else; others stay. */
  readonly table: readonly { readonly from: string; readonly to: string }[];
}

/** A number in decimal digits, with a point, an exponent and blanks around it. */
const number = /^ *[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)? *$/;

/** @return nothing when the text is no number, but has to be: the message does not match then */
export function valueOf(rule: ValueRule, captured: string): string | number | undefined {
  const text = textOfBytes(captured);
  const replaced = rule.table.find((row) => row.from === text)?.to ?? text;
  if (rule.type === "text") return replaced;
  const value = Number(replaced) * rule.scale + rule.offset;
  return number.test(replaced) && Number.isFinite(value) ? value : undefined;
}
