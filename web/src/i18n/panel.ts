/** Sentences of the panel, and those that both parts of the application say. */
import { errorNumbers } from "../model/sendFailures.ts";
import { translator } from "./language.svelte.ts";
import { panelEn } from "./panel.en.ts";
import { panelZh } from "./panel.zh.ts";

export const tp = translator({ en: panelEn, zhCN: panelZh });

/** The numbers for which a network has no way: one hint serves all. */
const sameHint: Record<number, number> = { 10050: 10051, 10065: 10051 };

/** What a failed click means, in sentences: first what to do, then the server's own lines. */
export function failureText(code: number, text: string): { sentence: string; details: string } {
  const known = `code${code}`;
  const first = known in panelEn ? tp(known as keyof typeof panelEn) : tp("codeOther", code);
  const numbers = errorNumbers(text).map((number) => sameHint[number] ?? number);
  const hints = [...new Set(numbers)].flatMap((number) => {
    const hint = `hint${number}`;
    return hint in panelEn ? [tp(hint as keyof typeof panelEn)] : [];
  });
  return { sentence: [first, ...hints].join(" "), details: text.trim() };
}
