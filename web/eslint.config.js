import js from "@eslint/js";
import svelte from "eslint-plugin-svelte";
import { defineConfig } from "eslint/config";
import ts from "typescript-eslint";
import svelteConfig from "./svelte.config.js";

export default defineConfig(
  js.configs.recommended,
  ts.configs.recommendedTypeChecked,
  ts.configs.stylisticTypeChecked,
  svelte.configs.recommended,
  svelte.configs.prettier,
  {
    languageOptions: { parserOptions: { projectService: true, extraFileExtensions: [".svelte"] } },
    linterOptions: { reportUnusedDisableDirectives: "error" },
    rules: {
      // TypeScript finds names that nobody declares.
      "no-undef": "off",
      curly: ["error", "multi-line"],
      eqeqeq: "error",
      // A place in a list of parameters may have to be filled; "_" says that it is not looked at.
      "@typescript-eslint/no-unused-vars": ["error", { argsIgnorePattern: "^_", varsIgnorePattern: "^_+$" }],
      // An async function without await turns what it throws into a rejection.
      "@typescript-eslint/require-await": "off",
      // Sets and maps are replaced here and not changed in place, as everything else of the state is.
      "svelte/prefer-svelte-reactivity": "off",
    },
  },
  {
    files: ["**/*.svelte", "**/*.svelte.ts"],
    languageOptions: { parserOptions: { parser: ts.parser, svelteConfig } },
  },
  {
    // ESLint does not see the types of what a component is given; svelte-check does, and refuses an implicit any.
    files: ["**/*.svelte"],
    rules: {
      "@typescript-eslint/no-unsafe-argument": "off",
      "@typescript-eslint/no-unsafe-assignment": "off",
      "@typescript-eslint/no-unsafe-call": "off",
      "@typescript-eslint/no-unsafe-member-access": "off",
      "@typescript-eslint/no-unsafe-return": "off",
    },
  },
);
