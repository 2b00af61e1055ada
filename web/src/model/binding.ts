/** How components name the values that devices say. */
import { type Component, looksOf } from "./layout.ts";
import { emptyBinding } from "./readBinding.ts";

/** A value in a text: its name stands behind the word. */
const placeholder = /\{value ([^{}:,]+)\}/g;

/** The text with what a function gives for each value that it names. */
export function withValues(text: string, of: (name: string) => string): string {
  return text.replace(placeholder, (_, name: string) => of(name.trim()));
}

/** The names of all values that a component shows or follows. */
export function valueNames(component: Component): Set<string> {
  const { value } = component.binding ?? emptyBinding;
  const names = new Set(value ? [value] : []);
  for (const { text } of looksOf(component)) withValues(text, (name) => (names.add(name), ""));
  return names;
}

/** Whether what devices say changes how a component looks. */
export function isBound(component: Component): boolean {
  return component.binding !== undefined || valueNames(component).size > 0;
}
