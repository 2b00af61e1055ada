import { mount } from "svelte";
import Panel from "./Panel.svelte";

export function start(place: HTMLElement): void {
  mount(Panel, { target: place });
}
