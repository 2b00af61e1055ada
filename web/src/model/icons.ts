/**
 * The icon of a component, as a look stores it: the name of one of the application's own icons, or the path of one
 * from the library. So a panel shows it without the library, and only icons in use are stored.
 */

/** Longest path that is read, in characters; those of the library have at most 1200. */
const longestPath = 4000;

/** Commands and numbers of an SVG path. It begins where it moves to, and holds nothing that a browser could run. */
const path = /^M[-\d.,\sMmLlHhVvCcSsQqTtAaZz]*$/;
const name = /^[a-z][a-zA-Z]{0,39}$/;

export function isIconPath(icon: string): boolean {
  return icon.length <= longestPath && path.test(icon);
}

/** A stored icon, or none when it is neither a name nor a path. */
export function asIcon(icon: string): string {
  return name.test(icon) || isIconPath(icon) ? icon : "";
}

/** An icon of the library. */
export interface LibraryIcon {
  readonly name: string;
  /** Strokes on a field of 24 by 24. */
  readonly path: string;
  /** Search terms, separated by spaces; the first Chinese one is the icon's label there. */
  readonly english: string;
  readonly chinese: string;
}

/** The icons with every word of the search in their terms of either language; those with it in their name come first. */
export function searchIcons(icons: readonly LibraryIcon[], search: string): LibraryIcon[] {
  const words = search
    .toLowerCase()
    .split(/[\s-]+/)
    .filter(Boolean);
  const found = icons.filter(({ name, english, chinese }) => {
    const terms = `${name} ${english} ${chinese}`.toLowerCase();
    return words.every((word) => terms.includes(word));
  });
  const isNamed = (icon: LibraryIcon) => words.every((word) => icon.name.includes(word) || icon.chinese.includes(word));
  return [...found.filter(isNamed), ...found.filter((icon) => !isNamed(icon))];
}

/**
 * Where an arrow key, Home or End leads in a grid that is read row by row.
 * @returns undefined for another key, and where nothing is in that direction
 */
export function placeInGrid(key: string, place: number, count: number, columns: number): number | undefined {
  const steps: Record<string, number> = { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -columns, ArrowDown: columns };
  if (key === "Home") return 0;
  if (key === "End") return count - 1;
  const step = steps[key];
  const to = step === undefined ? -1 : place + step;
  return to >= 0 && to < count ? to : undefined;
}
