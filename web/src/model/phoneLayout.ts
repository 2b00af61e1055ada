/**
 * The second layout of a page, for phones held upright: the same components in other places. Looks, commands and states
 * are shared; only places, sizes and font sizes differ, and a component can be left out.
 */
import type { Box } from "./geometry.ts";
import { asNumber, asObject } from "./json.ts";
import { type Component, componentSides, fontSizes, type Layout, type Page, pageSides } from "./layout.ts";

/** Where a phone shows a component, and how large its text is. One that is hidden keeps its place. */
export interface PhonePlace extends Box {
  readonly fontSize: number;
  readonly isHidden: boolean;
}

export interface PhoneLayout {
  /** Of the page on a phone, in px; it is fitted to the screen as any page. */
  readonly width: number;
  readonly height: number;
  /** By the ids of components. Those without a place are put below the others. */
  readonly places: Readonly<Record<number, PhonePlace>>;
}

/** The screen of a phone below the browser's address and above the bar of the panel, in px. */
export const phoneScreen = { width: 390, height: 700 };

/** Distance between components, and to the edges of the page, in px. */
export const phoneGap = 12;

/** The layout for phones in a stored document, with the places of these components; nothing when there is none. */
export function readPhone(value: unknown, components: readonly Component[]): PhoneLayout | undefined {
  if (value === undefined || value === null || typeof value !== "object") return undefined;
  const from = asObject(value);
  const stored = asObject(from["places"]);
  const side = (key: "width" | "height") =>
    Math.round(asNumber(from[key], phoneScreen[key], pageSides.least, pageSides.most));
  const known = components.filter(({ id }) => Object.hasOwn(stored, id));
  const places = Object.fromEntries(known.map((one) => [one.id, readPlace(stored[one.id], one)]));
  return { width: side("width"), height: side("height"), places };
}

function readPlace(value: unknown, component: Component): PhonePlace {
  const from = asObject(value);
  const whole = (key: keyof Box, least: number, most: number) =>
    Math.round(asNumber(from[key], component[key], least, most));
  return {
    x: whole("x", -100_000, 100_000),
    y: whole("y", -100_000, 100_000),
    width: whole("width", componentSides.least, componentSides.most),
    height: whole("height", componentSides.least, componentSides.most),
    fontSize: asNumber(from["fontSize"], component.fontSize, fontSizes.least, fontSizes.most),
    isHidden: from["isHidden"] === true,
  };
}

/** The page as a phone shows it: without what is hidden there, in the same drawing order. Otherwise the page itself. */
export function onPhone(page: Page): Page {
  const { phone, ...rest } = page;
  if (!phone) return page;
  const placed = page.components.filter(({ id }) => phone.places[id]);
  const lowest = Math.max(0, ...placed.map(({ id }) => bottomOf(phone.places[id]!)));
  const fresh = page.components.filter(({ id }) => !phone.places[id]);
  const below = inLines(fresh, phone.width, lowest + phoneGap);
  const bottom = Math.max(phone.height, ...[...below.values()].map((box) => box.y + box.height + phoneGap));
  const components = page.components.flatMap((one): Component[] => {
    const place = phone.places[one.id];
    if (!place) return [{ ...one, ...below.get(one.id) }];
    const { isHidden, ...box } = place;
    return isHidden ? [] : [{ ...one, ...box }];
  });
  return { ...rest, width: phone.width, height: Math.min(bottom, pageSides.most), components };
}

/** All pages as a phone shows them. */
export function layoutOnPhone(layout: Layout): Layout {
  return { ...layout, pages: layout.pages.map(onPhone) };
}

const bottomOf = (place: PhonePlace) => (place.isHidden ? 0 : place.y + place.height);

/** Boxes of components in their own sizes, beside each other as long as there is room; none wider than the page. */
function inLines(components: readonly Component[], width: number, top: number): Map<number, Box> {
  const boxes = new Map<number, Box>();
  const room = Math.max(componentSides.least, width - 2 * phoneGap);
  let [x, y, height] = [phoneGap, top, 0];
  for (const one of components) {
    const size = { width: Math.min(one.width, room), height: one.height };
    if (x > phoneGap && x + size.width > phoneGap + room) [x, y, height] = [phoneGap, y + height + phoneGap, 0];
    boxes.set(one.id, { x, y, ...size });
    [x, height] = [x + size.width + phoneGap, Math.max(height, size.height)];
  }
  return boxes;
}

/** The page without places of components that it no longer has. */
export function withoutStrayPlaces(page: Page): Page {
  const { phone } = page;
  if (!phone) return page;
  const ids = new Set(page.components.map((one) => String(one.id)));
  const kept = Object.entries(phone.places).filter(([id]) => ids.has(id));
  if (kept.length === Object.keys(phone.places).length) return page;
  return { ...page, phone: { ...phone, places: Object.fromEntries(kept) } };
}
