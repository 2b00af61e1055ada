/** Sentences of the author's part. */
import { authorEn } from "./author.en.ts";
import { authorZh } from "./author.zh.ts";
import { translator } from "./language.svelte.ts";

export const ta = translator({ en: authorEn, zhCN: authorZh });
