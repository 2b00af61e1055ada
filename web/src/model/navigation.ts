/** Which pages a panel lists and shows, and where a swipe leads. */
import { type AskingComponent, backTarget, confirmTarget, type Layout, type Page } from "./layout.ts";
import type { Point } from "./geometry.ts";

/** Whether a panel shows a page in its own right, and not only over others, above or below them. */
export function isWhole({ place }: Page): boolean {
  return place === "bar" || place === "hidden";
}

/** Of a header or a footer: whether another page, which comes earlier, is shown in its place. */
export function isSpare(layout: Layout, page: Page): boolean {
  return isEdge(page) && layout.pages.find(({ place }) => place === page.place) !== page;
}

export function isEdge({ place }: Pick<Page, "place">): boolean {
  return place === "header" || place === "footer";
}

/** What a panel shows above and below this page. */
export function edgesOf(layout: Layout, page: Page): { header: Page | undefined; footer: Page | undefined } {
  const first = (wanted: Page["place"]) =>
    isWhole(page) && !page.isBare ? layout.pages.find(({ place }) => place === wanted) : undefined;
  return { header: first("header"), footer: first("footer") };
}

/** The pages in the panel's bar, in their order. */
export function barPages(layout: Layout): Page[] {
  return layout.pages.filter((page) => page.place === "bar");
}

/**
 * The page that a panel shows for this id: the page itself, otherwise the start page, otherwise the first of the bar,
 * otherwise the first, otherwise none. Pop-ups, headers and footers are shown by themselves only where there is nothing
 * else.
 */
export function pageToShow(layout: Layout, id: string): Page | undefined {
  const pages = layout.pages.filter(isWhole);
  const find = (wanted: string) => pages.find((page) => page.id === wanted);
  return find(id) ?? find(layout.startPage) ?? barPages(layout)[0] ?? pages[0] ?? layout.pages[0];
}

/** Whether a page can ask before something is sent: it is a pop-up, and a link on it sends. */
export function canConfirm({ place, components }: Page): boolean {
  return place === "popup" && components.some((one) => one.type === "link" && one.target === confirmTarget);
}

/** The page that asks for this component; nothing when it names none, or one that can't ask: then its text does. */
export function confirmPageOf(layout: Layout, { confirmPage }: AskingComponent): Page | undefined {
  return layout.pages.find((page) => page.id === confirmPage && canConfirm(page));
}

/** Where a page link leads: to a page, a pop-up over the shown page, the page before, or merely out of a pop-up. */
export type Step = { to: "page" | "popup"; id: string } | { to: "back" | "close" | "nowhere" };

/**
 * @param target  of the link
 * @param from  the shown page, and whether the link is in a pop-up above it
 */
export function stepOf(layout: Layout, target: string, from: { page: string; isAbove: boolean }): Step {
  const page = layout.pages.find(({ id }) => id === target);
  if (page && !isEdge(page)) {
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

interface Size {
  readonly width: number;
  readonly height: number;
}

/**
 * The scales of a page and of its header and footer: all are equally wide, together they fit into the room, and the
 * header is at its upper, the footer at its lower end.
 * @returns the scales (0 of what is missing), and the heights of header and footer in px of the room
 */
export function stacked(page: Size, edges: readonly (Size | undefined)[], room: Size) {
  const shares = edges.map((edge) => (edge ? edge.height / edge.width : 0));
  const share = page.height / page.width + shares.reduce((sum, one) => sum + one, 0);
  const width = Math.max(1, Math.min(room.width, room.height / share));
  return {
    scale: width / page.width,
    edges: edges.map((edge, at) => ({ scale: edge ? width / edge.width : 0, height: width * shares[at]! })),
  };
}
