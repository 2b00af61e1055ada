import { mount } from "svelte";
import { language } from "../i18n/language.svelte.ts";
import { store } from "./project/store.svelte.ts";
import App from "./shell/App.svelte";

export async function start(place: HTMLElement): Promise<void> {
  await Promise.all([language.load(), store.load()]);
  mount(App, { target: place });
}
