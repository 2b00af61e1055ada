/** How the author's lists name a component and its triggers. */
import { ta } from "../../i18n/author.ts";
import { sliderValue, triggersOf } from "../../model/interactions.ts";
import { type Component, componentTitle } from "../../model/layout.ts";

/** @param component  none: the page itself */
export function nameOfComponent(component: Component | undefined): string {
  return component ? componentTitle(component) || ta(`type_${component.type}`) : ta("page");
}

/** @param trigger  empty: all positions of a slider */
export function nameOfTrigger(component: Component, trigger: string): string {
  if (trigger === "") return ta("oneForAll");
  if (component.type !== "slider") return ta(`trigger_${trigger as "click"}`);
  return ta("atPosition", sliderValue(component, triggersOf(component).indexOf(trigger)));
}
