import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import type { run } from "axe-core";
import type { Browser } from "playwright-core";
import { afterAll, beforeAll, expect, it } from "vitest";
import { newPage, screens, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { goTo, openCommand, type Place, places, storeSample } from "../support/places.ts";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

let browser: Browser;
let host: Host;
beforeAll(async () => {
  browser = await startBrowser();
  host = await Host.start();
  await storeSample(host);
});
afterAll(async () => {
  await browser.close();
  await host[Symbol.asyncDispose]();
});

const faulty: Place[] = [
  [
    "a command that can't be right",
    "#/edit/p-hall",
    async (page) => {
      await openCommand(page);
      await page.locator("#content").fill("\\q");
    },
  ],
  [
    "an interface that can't be right",
    "#/interfaces",
    async (page) => {
      await page.getByRole("button", { name: "New interface" }).click();
      await page.getByRole("button", { name: "Try and store" }).click();
    },
  ],
];

it.each([
  ["tablet", "light"],
  ["tablet", "dark"],
  ["phone", "light"],
] as const)("axe finds nothing from moderate on up, on a %s in %s", async (size, theme) => {
  const { page, context } = await newPage(browser, { ...screens[size], colorScheme: theme, reducedMotion: "reduce" });
  const found: string[] = [];
  for (const place of [...faulty, ...places]) {
    await goTo(place, page, host);
    await page.addScriptTag({ content: axe });
    const { violations } = await page.evaluate(() => (window as unknown as { axe: { run: typeof run } }).axe.run());
    for (const { id, impact, nodes } of violations) {
      if (impact !== "minor") found.push(`${place[0]}: ${id}: ${nodes.map((node) => node.html).join(" | ")}`);
    }
  }
  await context.close();
  expect(found).toEqual([]);
});
