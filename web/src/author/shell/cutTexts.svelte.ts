/** Finds texts that don't fit into their components, by laying them out as a page does, out of sight. */
import { mount, unmount } from "svelte";
import { type Component, hasStates } from "../../model/layout.ts";
import type { Project } from "../../model/project.ts";
import { lookOf, partClass, styleOf } from "../../view/look.ts";
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
  one.type !== "clock" &&
  (one.type !== "image" || !one.look.material) &&
  (one.look.text !== "" || (hasStates(one) && one.activeLook.text !== ""));

function keyOf(one: Component): string {
  const active = hasStates(one) ? [one.activeLook.text, one.activeLook.icon] : [];
  const { type, style, width, height, fontSize, fontFamily, fontWeight, look } = one;
  const kind = one.type === "slider" ? [one.vertical, one.min, one.max] : [];
  return [type, style, width, height, fontSize, fontFamily, fontWeight, look.text, look.icon, ...active, ...kind].join(
    "\n",
  );
}

function isCutIn(holder: HTMLElement, component: Component, pictures: Pictures): boolean {
  const states = hasStates(component) ? [false, true] : [false];
  return states.some((active) => {
    const box = document.createElement("div");
    box.className = `${partClass(component)} ${component.align}`;
    if (component.type === "slider" && component.vertical) box.classList.add("vertical");
    box.style.cssText = styleOf(component, lookOf(component, active));
    holder.append(box);
    const face = mount(PartFace, { target: box, props: { component, active, pictures } });
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
