/** Proposes how a page is laid out on a phone: in reading order, rows kept together where they fit. */
import { type Box, boxAround, contains } from "./geometry.ts";
import { type Component, type ComponentType, isActive, type Page, pageSides } from "./layout.ts";
import { isEdge } from "./navigation.ts";
import { type PhoneLayout, type PhonePlace, phoneGap, phoneScreen } from "./phoneLayout.ts";

/** Least width of each type in px; more of them do not stand in one line. */
const leastWidths: Record<ComponentType, number> = {
  button: 80,
  switch: 200,
  slider: 200,
  text: 70,
  image: 60,
  link: 80,
  clock: 90,
  group: 100,
  lamp: 100,
  gauge: 200,
};
/** Heights in px: of what is touched at least and at most, of a vertical slider, and of a picture beside others. */
const heights = { least: 52, most: 88, text: 28, slider: 200, picture: 160 };
/** Room above the first component in a group box, for its text. */
const headHeight = 44;
const leastFont = 14;
/** Width of a pop-up: so wide it stands in real size between the edges of the screen. */
const popUpWidth = phoneScreen.width - 32;

/** A component, and what stands on it: on a group box or a picture. */
interface Node {
  readonly component: Component;
  readonly children: Node[];
}

/** A new arrangement of all components of a page; hidden ones are shown again. */
export function arrangedForPhone(page: Page): PhoneLayout {
  const isPopUp = page.place === "popup";
  const width = isPopUp ? popUpWidth : phoneScreen.width;
  const nodes = nested(page);
  const boxesAt = (heightScale: number) => {
    const boxes = new Map<number, Box>();
    return {
      boxes,
      bottom: stack(nodes, { x: phoneGap, y: phoneGap, width: width - 2 * phoneGap }, heightScale, boxes),
    };
  };
  let { boxes, bottom } = boxesAt(1);
  if (bottom > phoneScreen.height) ({ boxes, bottom } = boxesAt(0));
  const isAsHighAsItsContent = isPopUp || isEdge(page);
  const height = Math.max(isAsHighAsItsContent ? pageSides.least : phoneScreen.height, Math.round(bottom));
  const whole = { x: 0, y: 0, width, height: Math.min(height, pageSides.most) };
  const places = page.components.map((one) => [one.id, placeOf(one, boxes.get(one.id) ?? whole)] as const);
  return { width, height: whole.height, places: Object.fromEntries(places) };
}

function placeOf(component: Component, box: Box): PhonePlace {
  const { fontSize } = component;
  const share = Math.min(1, Math.max(0.7, box.width / component.width));
  return {
    x: Math.round(box.x),
    y: Math.round(box.y),
    width: Math.round(box.width),
    height: Math.round(box.height),
    fontSize: Math.min(fontSize, Math.max(leastFont, Math.round(fontSize * share))),
    isHidden: false,
  };
}

/** Whether it lies behind everything else, as a picture of the whole page does. */
function isBackground(component: Component, page: Page): boolean {
  return !isActive(component.type) && component.width * component.height >= 0.85 * page.width * page.height;
}

/** The components as a tree: each within the smallest one that lies beneath its middle and can hold others. */
function nested(page: Page): Node[] {
  const nodes = page.components
    .filter((one) => !isBackground(one, page))
    .map((component): Node => ({ component, children: [] }));
  const area = ({ component }: Node) => component.width * component.height;
  const isHolder = ({ component: { type } }: Node) => type === "group" || type === "image";
  const roots: Node[] = [];
  for (const node of nodes) {
    const { x, y, width, height } = node.component;
    const middle = { x: x + width / 2, y: y + height / 2 };
    const holders = nodes.filter((one) => isHolder(one) && area(one) > area(node) && contains(one.component, middle));
    const holder = holders.sort((one, other) => area(one) - area(other))[0];
    (holder?.children ?? roots).push(node);
  }
  return roots;
}

/** In reading order: rows of what stands beside each other, each from left to right. */
function rowsOf(nodes: readonly Node[]): Node[][] {
  const rows: Node[][] = [];
  for (const node of [...nodes].sort((one, other) => one.component.y - other.component.y)) {
    const { y, height } = node.component;
    const first = rows.at(-1)?.[0]?.component;
    const isBeside = first && y + height / 2 < first.y + first.height;
    if (isBeside && !node.children.length) rows.at(-1)!.push(node);
    else rows.push([node]);
  }
  for (const row of rows) row.sort((one, other) => one.component.x - other.component.x);
  return rows;
}

/**
 * Places nodes below each other. Returns the lower end, with a gap.
 * @param heightScale  0: as low as they may be, 1: as high as they are, within limits
 */
function stack(nodes: readonly Node[], at: Omit<Box, "height">, heightScale: number, boxes: Map<number, Box>): number {
  let { y } = at;
  for (const row of rowsOf(nodes)) {
    for (const line of linesOf(row, at.width)) {
      y = line[0]!.children.length
        ? frame(line[0]!, { ...at, y }, heightScale, boxes)
        : spread(line, { ...at, y }, heightScale, boxes);
    }
  }
  return y;
}

/** A node around what stands on it. */
function frame({ component, children }: Node, at: Omit<Box, "height">, heightScale: number, boxes: Map<number, Box>) {
  const head = component.look.text ? headHeight : phoneGap;
  const inner = { x: at.x + phoneGap, y: at.y + head, width: at.width - 2 * phoneGap };
  const bottom = stack(children, inner, heightScale, boxes);
  boxes.set(component.id, { ...at, height: bottom - at.y });
  return bottom + phoneGap;
}

/** A row in as few lines as its width allows, all about equally long. What holds others has a line of its own. */
function linesOf(row: readonly Node[], width: number): Node[][] {
  const least = Math.max(...row.map(({ component }) => leastWidth(component)));
  const fits = row.reduce((sum, { component }) => sum + leastWidth(component) + phoneGap, -phoneGap) <= width;
  const most = Math.max(1, Math.floor((width + phoneGap) / (least + phoneGap)));
  if (row.some(({ children }) => children.length)) {
    const at = row.findIndex(({ children }) => children.length);
    const parts = [row.slice(0, at), row.slice(at + 1)].map((part) => (part.length ? linesOf(part, width) : []));
    return [...parts[0]!, [row[at]!], ...parts[1]!];
  }
  const count = fits ? 1 : Math.ceil(row.length / most);
  const length = Math.ceil(row.length / count);
  return Array.from({ length: count }, (_, index) => row.slice(index * length, (index + 1) * length)).filter(
    (line) => line.length,
  );
}

function leastWidth(component: Component): number {
  return component.type === "slider" && component.vertical ? leastWidths.button : leastWidths[component.type];
}

/** One line over the whole width, the shares as on the page itself. */
function spread(line: readonly Node[], at: Omit<Box, "height">, heightScale: number, boxes: Map<number, Box>): number {
  const parts = line.map((one) => one.component);
  const free = at.width - phoneGap * (line.length - 1) - parts.reduce((sum, one) => sum + leastWidth(one), 0);
  const wanted = parts.reduce((sum, one) => sum + one.width, 0);
  let { x } = at;
  for (const one of parts) {
    const width = leastWidth(one) + Math.max(0, free) * (one.width / wanted);
    boxes.set(one.id, { x, y: at.y, width, height: heightOf(one, width, line.length > 1, heightScale) });
    x += width + phoneGap;
  }
  const around = boxAround(parts.map((one) => boxes.get(one.id)!))!;
  for (const one of parts) {
    const box = boxes.get(one.id)!;
    boxes.set(one.id, { ...box, y: at.y + (around.height - box.height) / 2 });
  }
  return at.y + around.height + phoneGap;
}

function heightOf(one: Component, width: number, hasNeighbours: boolean, heightScale: number): number {
  if (one.type === "slider" && one.vertical) return heights.slider;
  if (one.type === "image") {
    const inProportion = (width * one.height) / one.width;
    return Math.min(one.height, inProportion, hasNeighbours || !heightScale ? heights.picture : Infinity);
  }
  const least = isActive(one.type) ? heights.least + (one.type === "slider" ? 20 : 0) : heights.text;
  const most = Math.max(least, Math.min(one.height, heights.most));
  return least + heightScale * (most - least);
}
