/** Sentences of the panel, and those that both parts of the application say. */
import { errorNumbers } from "../model/sendFailures.ts";
import { translator } from "./language.svelte.ts";
import { panelEn } from "./panel.en.ts";
import { panelZh } from "./panel.zh.ts";

export const tp = translator({ en: panelEn, zhCN: panelZh });

/** The numbers for which a network has no way: one hint serves all. */
const sameHint: Record<number, number> = { 10050: 10051, 10065: 10051 };

/** What an error number of a port means, and what to do; empty for one that is rare. */
export function errorHint(number: number): string {
  const hint = `hint${sameHint[number] ?? number}`;
  return hint in panelEn ? tp(hint as keyof typeof panelEn) : "";
}

/**
 * What a refused call means: what the server says, exactly as it came, and what to do. Where the server says nothing,
 * the sentence for its code stands in.
 */
export function failureText(code: number, text: string): { said: string; advice: string } {
  const known = `code${code}`;
  const first = known in panelEn ? tp(known as keyof typeof panelEn) : text ? "" : tp("codeOther", code);
  const hints = new Set(errorNumbers(text).map(errorHint));
  return text ? { said: text, advice: [first, ...hints].filter(Boolean).join(" ") } : { said: first, advice: "" };
}
