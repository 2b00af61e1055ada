import type { Browser, Page } from "playwright-core";
import { afterAll, beforeAll, expect, it } from "vitest";
import { axeFindings } from "../support/axe.ts";
import { newPage, screens, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";
import { goTo, openCommand, type Place, places, popUp, storeQuestions, storeSample } from "../support/places.ts";

let browser: Browser;
let host: Host;
let projector: TcpDevice;
beforeAll(async () => {
  browser = await startBrowser();
  host = await Host.start();
  projector = await TcpDevice.start();
  await host.addTcp("Projector", projector.port);
  await storeSample(host, [popUp]);
  await storeQuestions(host, (await host.read("getConfigList")).configList[0]!.nodeId, projector);
});
afterAll(async () => {
  await browser.close();
  await Promise.all([projector[Symbol.asyncDispose](), host[Symbol.asyncDispose]()]);
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

/** Columns, dialogs and screens that are wider than the room that they have. */
function cutOff(page: Page): Promise<string[]> {
  return page.evaluate(() =>
    [...document.querySelectorAll("main, aside, dialog, dialog form, .screen")]
      .filter((one) => one.scrollWidth > one.clientWidth + 1)
      .map((one) => `${one.tagName}.${one.className} is cut off at the right`),
  );
}

it.each([
  ["tablet", "light"],
  ["tablet", "dark"],
  ["phone", "light"],
] as const)("axe finds nothing from moderate on up, and nothing is cut off, on a %s in %s", async (size, theme) => {
  const { page, context } = await newPage(browser, { ...screens[size], colorScheme: theme, reducedMotion: "reduce" });
  const found: string[] = [];
  for (const place of [...faulty, ...places]) {
    await goTo(place, page, host);
    found.push(...[...(await axeFindings(page)), ...(await cutOff(page))].map((one) => `${place[0]}: ${one}`));
  }
  await context.close();
  expect(found).toEqual([]);
});
