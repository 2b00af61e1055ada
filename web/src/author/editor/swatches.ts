import { designOf, type ProjectTheme, themeColors } from "../../model/projectTheme.ts";

/** Those of the usual light appearance: without a theme the browser of each panel decides. */
const usual = ["#0a6c76", "#d9eef0", "#ffffff", "#e6eaee", "#16202a", "#4c5a68", "#10703c", "#8a5300", "#b3261e"];

/** The colours of a theme that are worth choosing, each once. */
export function themeSwatches(theme: ProjectTheme | undefined): string[] {
  if (!theme) return usual;
  const design = designOf(theme);
  const colors = themeColors(design);
  const { accent, part, surface, ink, ok, warn, bad } = colors;
  const list = [accent, colors["accent-soft"], part, surface, design.from, ink, colors["ink-soft"], ok, warn, bad];
  return [...new Set(list.map((one) => one.toLowerCase()))];
}
