/** Converts the theme of a project to the style of the element around its pages. */
import { designOf, type ProjectTheme, themeColors } from "../model/projectTheme.ts";
import type { Pictures } from "./pictures.ts";

/** CSS variables of the theme; nothing without one, so that all is as the browser's appearance says. */
export function themeStyle(theme: ProjectTheme | undefined, pictures: Pictures): string | undefined {
  if (!theme) return undefined;
  const design = designOf(theme);
  const { isDark, angle, from, to, depth, glow } = design;
  const picture = theme.material && pictures.get(theme.material);
  const gradient = `linear-gradient(${angle}deg, ${from}, ${to})`;
  const shade = isDark ? "rgb(0 0 0 / 38%)" : "rgb(40 30 20 / 14%)";
  const light = isDark ? "rgb(255 255 255 / 7%)" : "rgb(255 255 255 / 45%)";
  const variables: Record<string, string> = {
    ...themeColors(design),
    "page-fill": picture ? `url("${picture}") center / cover no-repeat, ${gradient}` : gradient,
    "part-sheen": `linear-gradient(${isDark ? "rgb(255 255 255 / 5%)" : "rgb(255 255 255 / 10%)"}, transparent 60%)`,
    "part-shadow": `inset 0 1px 0 ${light}, 0 2px 8px ${shade}`,
    shadow: `0 1px 2px ${shade}, 0 12px 36px ${shade}`,
    depth: `${depth}px`,
    glow: `${glow}px`,
    "glow-share": glow ? "55%" : "0%",
    "part-on-edge": design.accent,
  };
  const list = Object.entries(variables).map(([name, value]) => `--${name}:${value}`);
  return `color-scheme:${isDark ? "dark" : "light"};color:var(--ink);${list.join(";")}`;
}
