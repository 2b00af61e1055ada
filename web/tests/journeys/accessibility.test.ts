import type { Browser } from "playwright-core";
import { afterAll, beforeAll, expect, it } from "vitest";
import { axeFindings } from "../support/axe.ts";
import { newPage, screens, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { goTo, openCommand, type Place, places, popUp, storeSample } from "../support/places.ts";

let browser: Browser;
let host: Host;
beforeAll(async () => {
  browser = await startBrowser();
  host = await Host.start();
  await storeSample(host, [popUp]);
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
    found.push(...(await axeFindings(page)).map((one) => `${place[0]}: ${one}`));
  }
  await context.close();
  expect(found).toEqual([]);
});
