import type { Environment } from "vitest/runtime";

/** Node, with modules compiled as for a browser: runes are live there, and no page is around them. */
export default {
  name: "runes",
  viteEnvironment: "client",
  setup: () => ({ teardown: () => undefined }),
} satisfies Environment;
