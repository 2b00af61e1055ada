/// <reference types="vitest/config" />
import { svelte } from "@sveltejs/vite-plugin-svelte";
import { defineConfig } from "vite";
import { panelBundle } from "./build/panelBundle.ts";
import { checkSizes } from "./build/sizes.ts";
import { precompress } from "./build/precompress.ts";

/** What an entry may weigh at most, gzipped, with everything that it loads. The build fails above. */
const limits = { panel: 40_000, author: 90_000 };

const server = process.env["SERVER_URL"] ?? "http://127.0.0.1:8086";

export default defineConfig({
  plugins: [svelte(), panelBundle(), checkSizes(limits), precompress()],
  base: "./",
  build: {
    outDir: process.env["WEB_OUT"] ?? "../build/web",
    emptyOutDir: true,
    target: ["chrome111", "edge111", "firefox114", "safari16.4"],
    assetsInlineLimit: 0,
    modulePreload: { polyfill: false },
  },
  server: { proxy: { "/api": server, "/settings.json": server } },
  test: {
    projects: [
      { extends: true, test: { name: "model", include: ["tests/model/**/*.test.ts"], environment: "node" } },
      {
        extends: true,
        test: {
          name: "journeys",
          include: ["tests/journeys/**/*.test.ts"],
          environment: "node",
          testTimeout: 120_000,
          hookTimeout: 40_000,
          fileParallelism: false,
        },
      },
    ],
  },
});
