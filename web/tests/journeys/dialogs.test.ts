import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { connected, newPage, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { goTo, places, storeSample } from "../support/places.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

it("Escape closes an empty form at once, and asks before it closes a filled one", async () => {
  await using host = await Host.start();
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/interfaces`);
  await connected(page);
  const open = page.getByRole("button", { name: "New interface" });
  const dialogs = page.getByRole("dialog");
  await open.click();
  await page.keyboard.press("Escape");
  await dialogs.waitFor({ state: "detached" });

  await open.click();
  await dialogs.getByLabel("Name").focus();
  await page.keyboard.type("Lamps");
  await page.keyboard.press("Escape");
  await dialogs.getByText("What you have entered here is not kept.").waitFor();
  await page.keyboard.press("Escape");
  await dialogs.getByText("What you have entered here is not kept.").waitFor({ state: "detached" });
  await page.keyboard.type(" 2");
  expect(await dialogs.getByLabel("Name").inputValue()).toBe("Lamps 2");
  await dialogs.getByLabel("Name").fill("Lamps of the hall ".repeat(5));
  await dialogs.getByText("At most 80 characters go here, and these are 89.").waitFor();
  expect(await dialogs.getByLabel("Name").inputValue()).toHaveLength(90);

  await dialogs.getByRole("button", { name: "Close" }).click();
  await page.getByRole("button", { name: "Discard it" }).click();
  await dialogs.waitFor({ state: "detached" });
  expect(errors).toEqual([]);
});

it("an icon is found in Chinese and chosen by keyboard, and the component shows it", async () => {
  await using host = await Host.start();
  await storeSample(host);
  const { page, errors } = await newPage(browser);
  await goTo(
    places.find(([name]) => name === "icons")!,
    page,
    host,
  );
  await page.getByRole("searchbox").fill("投影");
  await page.getByRole("option", { name: "device projector" }).waitFor();
  await page.keyboard.press("ArrowDown");
  const path = await page.locator("[role=option]:focus path").getAttribute("d");
  await page.keyboard.press("Enter");
  await page.getByRole("dialog").waitFor({ state: "detached" });
  await page.locator(".sheet .part").nth(1).locator(`path[d="${path}"]`).waitFor();
  expect(errors).toEqual([]);
});
