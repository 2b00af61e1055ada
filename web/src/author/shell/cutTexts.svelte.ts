/** Finds texts that don't fit into their components, by laying them out as a page does, out of sight. */
import { mount, unmount } from "svelte";
import { withValues } from "../../model/binding.ts";
import { type Component, hasStates, type Look, looksOf } from "../../model/layout.ts";
import type { Project } from "../../model/project.ts";
import { over, partClass, styleOf } from "../../view/look.ts";
import PartFace from "../../view/PartFace.svelte";
import type { Pictures } from "../../view/pictures.ts";
import { themeStyle } from "../../view/themeStyle.ts";

/** As many components are laid out between two frames. */
const slice = 20;
/** Room of a line above and below its letters, as a share of the font size: it may be cut off. */
const leading = 0.15;

export class CutTexts {
  /** By all that the layout depends on, apart from the theme. */
  #known = $state.raw<ReadonlyMap<string, boolean>>(new Map());
  #theme = "";
  #waiting: Component[] = [];
  #frame = 0;

  constructor(readonly pictures: Pictures) {}

  /** Whether a part of the text is out of the component's box; not, as long as that is unknown. */
  readonly isCut = (component: Component): boolean => this.#known.get(keyOf(component)) ?? false;

  /** Lays out what is not known yet, a few components at a time. */
  look(project: Project): void {
    const theme = themeStyle(project.layout.theme, this.pictures) ?? "";
    if (theme !== this.#theme) this.#known = new Map();
    this.#theme = theme;
    this.#waiting = project.layout.pages.flatMap(({ components }) =>
      components.filter((one) => hasText(one) && !this.#known.has(keyOf(one))),
    );
    if (this.#waiting.length && !this.#frame) this.#frame = requestAnimationFrame(() => this.#step());
  }

  /** Ends what is under way. */
  stop(): void {
    cancelAnimationFrame(this.#frame);
    this.#frame = 0;
  }

  #step(): void {
    const known = new Map(this.#known);
    const holder = document.createElement("div");
    holder.style.cssText = `${this.#theme};position:fixed;left:0;top:0;width:0;height:0;overflow:hidden;visibility:hidden`;
    holder.ariaHidden = "true";
    document.body.append(holder);
    for (const one of this.#waiting.splice(0, slice)) known.set(keyOf(one), isCutIn(holder, one, this.pictures));
    holder.remove();
    this.#frame = this.#waiting.length ? requestAnimationFrame(() => this.#step()) : 0;
    this.#known = known;
  }
}

/** Clocks show nothing of the author's; a picture covers the text of an image. */
const hasText = (one: Component) =>
  one.type !== "clock" && (one.type !== "image" || !one.look.material) && looksOf(one).some((look) => look.text !== "");

function keyOf(one: Component): string {
  const looks = looksOf(one).flatMap(({ text, icon }) => [text, icon]);
  const { type, style, width, height, fontSize, fontFamily, fontWeight } = one;
  const kind = one.type === "slider" ? [one.vertical, one.min, one.max] : [];
  return [type, style, width, height, fontSize, fontFamily, fontWeight, ...looks, ...kind].join("\n");
}

/** How a component can look, with digits in the places of values. */
function shownLooks(component: Component): Look[] {
  const { look, binding } = component;
  const usual = hasStates(component) ? [look, over(look, component.activeLook)] : [look];
  const all = [...usual, ...(binding?.states ?? []).map((state) => over(look, state.look))];
  return all.map((one) => ({ ...one, text: withValues(one.text, () => "0000") }));
}

function isCutIn(holder: HTMLElement, component: Component, pictures: Pictures): boolean {
  return shownLooks(component).some((look) => {
    const box = document.createElement("div");
    box.className = `${partClass(component)} ${component.align}`;
    if (component.type === "slider" && component.vertical) box.classList.add("vertical");
    box.style.cssText = styleOf(component, look);
    holder.append(box);
    const face = mount(PartFace, { target: box, props: { component, look, pictures } });
    const around = box.getBoundingClientRect();
    const free = leading * component.fontSize;
    const isOut = [...box.querySelectorAll(":scope > .text, :scope > .label, :scope > .value")].some((text) => {
      const { top, bottom, left, right } = text.getBoundingClientRect();
      return (
        top < around.top - free || bottom > around.bottom + free || left < around.left - 1 || right > around.right + 1
      );
    });
    void unmount(face);
    box.remove();
    return isOut;
  });
}
