/** What stands over a page, which few pages need. Loaded before one of them is shown. */
export { default as Confirm } from "./Confirm.svelte";
export { default as PopUp } from "./PopUp.svelte";
