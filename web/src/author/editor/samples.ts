import { type Component, type ComponentType } from "../../model/layout.ts";
import { newWithText } from "./newWithText.ts";

/** Sizes in which the kinds can be told apart when they are small, in px of a page. */
const sizes: Partial<Record<ComponentType, [width: number, height: number]>> = {
  button: [110, 64],
  switch: [150, 64],
  slider: [150, 72],
  text: [110, 48],
  link: [120, 64],
  clock: [110, 64],
  group: [150, 90],
  lamp: [140, 48],
  gauge: [150, 72],
};

/** A component of that kind, to be shown in the palette; none for images, which show nothing of their own. */
export function sampleOf(type: ComponentType): Component | undefined {
  const size = sizes[type];
  if (!size) return undefined;
  const fresh = newWithText(type);
  const text = type === "slider" || type === "switch" ? "" : fresh.look.text;
  const [width, height] = size;
  return { ...fresh, width, height, fontSize: type === "clock" ? 24 : 20, look: { ...fresh.look, text } };
}
