import { ta } from "../../i18n/author.ts";
import { type Component, type ComponentType, newComponent } from "../../model/layout.ts";

const words = {
  button: "newButton",
  switch: "newSwitch",
  slider: "newSlider",
  text: "newText",
  link: "newLink",
  group: "newGroup",
  lamp: "newLamp",
  gauge: "newGauge",
} as const;

/** A new component with the text of its kind. */
export function newWithText(type: ComponentType): Component {
  return newComponent(type, 0, 0, type in words ? ta(words[type as keyof typeof words]) : "");
}
