/** Lays out the components of ready-made pages and groups in boxes that divide a page. */
import type { Box } from "../../model/geometry.ts";
import { type Component, type ComponentOf, type ComponentType, newComponent } from "../../model/layout.ts";

/** Divides a box from top to bottom in these proportions, with a gap between the parts. */
export function rows(box: Box, shares: readonly number[], gap: number): Box[] {
  return divided(box.height, shares, gap).map(([at, size]) => ({ ...box, y: box.y + at, height: size }));
}

/** Divides a box from left to right. */
export function columns(box: Box, shares: readonly number[], gap: number): Box[] {
  return divided(box.width, shares, gap).map(([at, size]) => ({ ...box, x: box.x + at, width: size }));
}

/** Divides a box into equal cells, line by line. */
export function cells(box: Box, across: number, down: number, gap: number): Box[] {
  const equal = (count: number) => Array.from({ length: count }, () => 1);
  return rows(box, equal(down), gap).flatMap((row) => columns(row, equal(across), gap));
}

function divided(length: number, shares: readonly number[], gap: number): [at: number, size: number][] {
  const room = length - gap * (shares.length - 1);
  const whole = shares.reduce((sum, share) => sum + share, 0);
  let before = 0;
  return shares.map((share, index) => {
    const at = Math.round((room * before) / whole) + gap * index;
    before += share;
    return [at, Math.round((room * before) / whole) + gap * index - at];
  });
}

/** A change of a fresh component, its look apart. */
type Change<Type extends ComponentType> = Partial<Omit<ComponentOf<Type>, "id" | "type" | "look">> & { icon?: string };

export class Builder {
  readonly components: Component[] = [];

  /** @param gap  distance between components, in px; sizes of type go with it */
  constructor(readonly gap: number) {}

  /** Puts a component into a box. Its type has the size that suits the box, unless `change` says another. */
  put<Type extends ComponentType>(type: Type, box: Box, text: string, change: Change<Type> = {}): void {
    const { icon = "", ...rest } = change;
    const fresh: Component = newComponent(type, 0, 0, text);
    const fontSize = this.#fontSize(type, box, text, icon !== "");
    this.components.push({ ...fresh, ...box, fontSize, ...rest, look: { ...fresh.look, icon } });
  }

  /** A box with a title. @returns the room inside it */
  section(box: Box, title: string): Box {
    const fontSize = Math.round(this.gap * 1.1);
    const top = Math.round(fontSize * 2.3);
    this.put("group", box, title, { fontSize });
    const { gap } = this;
    return {
      x: box.x + gap,
      y: box.y + top,
      width: box.width - 2 * gap,
      height: box.height - top - gap,
    };
  }

  /** The title of a page with an icon, and the time. */
  header(box: Box, title: string, icon: string): void {
    const [left, right] = columns(box, [7, 3], this.gap);
    const fontSize = Math.round(Math.min(box.height * 0.42, box.width / 17));
    this.put("text", left!, title, { icon, fontSize, fontWeight: 700 });
    this.put("clock", right!, "", { align: "right", fontSize });
  }

  /** Type that fills its box well and leaves no word cut: by the height of the box and by the length of the text. */
  #fontSize(type: ComponentType, box: Box, text: string, hasIcon: boolean): number {
    const longest = Math.max(1, ...text.split(/\s+/).map(widthOf));
    // Beside the text of a switch stands its toggle, below that of a slider its rail.
    const byWidth = box.width / (longest + (type === "switch" ? 5.5 : 1.4));
    const byHeight = box.height / (type === "slider" ? 4.5 : hasIcon ? 4 : 2.6);
    return Math.round(Math.max(12, Math.min(byWidth, byHeight, this.gap * 1.3)));
  }
}

/** About how wide a word is, in its font size. */
function widthOf(word: string): number {
  return [...word].reduce((sum, character) => sum + (character > "\u2e80" ? 1 : 0.78), 0);
}
