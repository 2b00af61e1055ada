/** Light, dark, or the theme of the system; kept in this browser. */

export const themes = ["auto", "light", "dark"] as const;
export type Theme = (typeof themes)[number];
const key = "theme";

export function chosenTheme(): Theme {
  const stored = localStorage.getItem(key);
  return themes.find((theme) => theme === stored) ?? "auto";
}

export function chooseTheme(theme: Theme): void {
  localStorage.setItem(key, theme);
  applyTheme();
}

const systemDark = () => matchMedia("(prefers-color-scheme: dark)");

/** Shows the page in the chosen theme, and follows the system if that is chosen. Call once. */
export function followTheme(): void {
  systemDark().addEventListener("change", applyTheme);
  applyTheme();
}

function applyTheme(): void {
  const theme = chosenTheme();
  const isDark = theme === "dark" || (theme === "auto" && systemDark().matches);
  document.documentElement.dataset["theme"] = isDark ? "dark" : "light";
}
