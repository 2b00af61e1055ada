/** Which pages a panel lists and shows, and where a swipe leads. */
import { backTarget, type Layout, type Page } from "./layout.ts";
import type { Point } from "./geometry.ts";

/** The pages in the panel's bar, in their order. */
export function barPages(layout: Layout): Page[] {
  return layout.pages.filter((page) => page.place === "bar");
}

/**
 * The page that a panel shows for this id: the page itself, otherwise the start page, otherwise the first of the bar,
 * otherwise the first, otherwise none. A pop-up is shown by itself only where there is nothing else.
 */
export function pageToShow(layout: Layout, id: string): Page | undefined {
  const pages = layout.pages.filter(({ place }) => place !== "popup");
  const find = (wanted: string) => pages.find((page) => page.id === wanted);
  return find(id) ?? find(layout.startPage) ?? barPages(layout)[0] ?? pages[0] ?? layout.pages[0];
}

/** Where a page link leads: to a page, a pop-up over the shown page, the page before, or merely out of a pop-up. */
export type Step = { to: "page" | "popup"; id: string } | { to: "back" | "close" | "nowhere" };

/**
 * @param target  of the link
 * @param from  the shown page, and whether the link is in a pop-up above it
 */
export function stepOf(layout: Layout, target: string, from: { page: string; isAbove: boolean }): Step {
  const page = layout.pages.find(({ id }) => id === target);
  if (page) {
    if (page.id === from.page) return { to: "close" };
    return { to: page.place === "popup" ? "popup" : "page", id: page.id };
  }
  if (target !== backTarget) return { to: "nowhere" };
  return { to: from.isAbove ? "close" : "back" };
}

/** Least length of a swipe, in px of the screen, and its longest duration, in ms. */
const swipe = { length: 80, duration: 700 };

/**
 * How many pages a finger goes on that moved by this much in this time: 1 to the next (to the left), -1 to the previous
 * one, 0 when it was no swipe.
 */
export function swipeStep(by: Point, ms: number): -1 | 0 | 1 {
  const isSwipe = ms <= swipe.duration && Math.abs(by.x) >= swipe.length && Math.abs(by.x) > 2 * Math.abs(by.y);
  return !isSwipe ? 0 : by.x < 0 ? 1 : -1;
}

/** The page that lies so many places from another one in the bar; none beyond its ends, or for a page not in it. */
export function neighbour(layout: Layout, id: string, by: number): Page | undefined {
  const pages = barPages(layout);
  const at = pages.findIndex((page) => page.id === id);
  return at < 0 ? undefined : pages[at + by];
}
