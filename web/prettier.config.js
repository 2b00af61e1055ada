/** @type {import("prettier").Config} */
export default {
  printWidth: 120,
  // Blanks between elements don't show here: what holds several of them is a flex box or a grid.
  htmlWhitespaceSensitivity: "ignore",
  plugins: ["prettier-plugin-svelte"],
  overrides: [{ files: "*.svelte", options: { parser: "svelte" } }],
};
