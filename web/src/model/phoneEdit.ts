/** Changes to the layout for phones, see phoneLayout.ts. */
import { freePlace } from "./freePlace.ts";
import type { Box } from "./geometry.ts";
import type { Component, Page } from "./layout.ts";
import { onPhone, type PhonePlace } from "./phoneLayout.ts";

/** Places on the page itself are multiples of it, in px. */
const grid = 10;

/**
 * The page after a change to what a phone shows of it. Places, sizes and font sizes go into the layout for phones, all
 * else into both layouts. What `change` adds is added to both, on the page itself at a free place; what it leaves out
 * is deleted.
 */
export function changedOnPhone(page: Page, change: (shown: Page) => Page): Page {
  const { phone } = page;
  if (!phone) return change(page);
  const before = onPhone(page);
  const after = change(before);
  if (after === before) return page;
  const { width, height, components: shown, ...common } = after;
  const own = new Map(page.components.map((one) => [one.id, one]));
  const places: Record<number, PhonePlace> = {};
  for (const { id, x, y, width, height, fontSize } of shown) {
    places[id] = { x, y, width, height, fontSize, isHidden: false };
  }
  const taken: Box[] = [...page.components];
  const changed = shown.map((one): Component => {
    const from = own.get(one.id) ?? { ...one, ...freePlace(one, { ...page, x: 0, y: 0 }, taken, grid) };
    if (!own.has(one.id)) taken.push(from);
    return { ...one, x: from.x, y: from.y, width: from.width, height: from.height, fontSize: from.fontSize };
  });
  // What is hidden stays behind the component that it has followed so far.
  const components = [...changed];
  page.components.forEach((one, index) => {
    const place = phone.places[one.id];
    if (!place?.isHidden) return;
    places[one.id] = place;
    const before = page.components[index - 1]?.id;
    components.splice(components.findIndex(({ id }) => id === before) + 1, 0, one);
  });
  return { ...common, width: page.width, height: page.height, components, phone: { width, height, places } };
}

/** The page with a component hidden on phones, or shown there again in its place. */
export function withHidden(page: Page, ids: ReadonlySet<number>, isHidden: boolean): Page {
  // Whatever has no place yet gets that in which it is shown now.
  const { phone, ...rest } = changedOnPhone(page, (shown) => ({ ...shown }));
  if (!phone) return page;
  const places = { ...phone.places };
  for (const id of ids) if (places[id]) places[id] = { ...places[id], isHidden };
  return { ...rest, phone: { ...phone, places } };
}

/** The page without a layout for phones. */
export function withoutPhone(page: Page): Page {
  const { phone: _, ...rest } = page;
  return rest;
}
