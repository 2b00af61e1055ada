import { svelte } from "@sveltejs/vite-plugin-svelte";
import { defineConfig, type TestProjectConfiguration } from "vitest/config";
import { iconLibrary } from "./build/iconLibrary.ts";
import { licences } from "./build/licences.ts";
import { panelBundle } from "./build/panelBundle.ts";
import { checkSizes } from "./build/sizes.ts";
import { precompress } from "./build/precompress.ts";
import { retries } from "./build/retries.ts";

/**
 * Maximum size of an entry, gzipped, with everything that it loads at first. The build fails above it. Icons, themes
 * and blocks load when they are needed.
 */
const limits = { panel: 45_000, author: 130_000 };

const server = process.env["SERVER_URL"] ?? "http://127.0.0.1:8086";
const webSocket = process.env["SERVER_WEBSOCKET"] ?? "ws://127.0.0.1:8081";

/** Tests that drive the built application in a browser: one after the other, with bounds against hangs; a browser
 * that was starved of the processor gets a second chance. */
const driven = (name: string): TestProjectConfiguration => ({
  extends: true,
  test: {
    name,
    include: [`tests/${name}/**/*.test.ts`],
    environment: "node",
    retry: 1,
    testTimeout: 120_000,
    hookTimeout: 60_000,
    fileParallelism: false,
  },
});

export default defineConfig({
  plugins: [svelte(), iconLibrary(), licences(), panelBundle(), checkSizes(limits), precompress()],
  base: "./",
  build: {
    outDir: process.env["WEB_OUT"] ?? "../build/web",
    emptyOutDir: true,
    target: ["chrome111", "edge111", "firefox114", "safari16.4"],
    assetsInlineLimit: 0,
    modulePreload: { polyfill: false },
  },
  server: { proxy: { "/api": server, "/settings.json": server, "/ws": { target: webSocket, ws: true } } },
  test: {
    reporters: ["default", retries],
    projects: [
      { extends: true, test: { name: "model", include: ["tests/model/**/*.test.ts"], environment: "node" } },
      {
        extends: true,
        test: { name: "state", include: ["tests/state/**/*.test.ts"], environment: "./tests/support/runes.ts" },
      },
      driven("journeys"),
      driven("pictures"),
      driven("measure"),
    ],
  },
});
