import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { newPage, save, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

it("a page to begin with goes from the empty list to the panel, in the size and with the name that it was given", async () => {
  await using host = await Host.start();
  const { page, errors } = await newPage(browser);
  await page.goto(host.url);
  await page.getByRole("button", { name: "Meeting room" }).click();
  const form = page.getByRole("dialog");
  expect(await form.getByLabel("Name of the page").inputValue()).toBe("Meeting room");
  await form.getByRole("button", { name: "Lights" }).click();
  expect(await form.getByLabel("Name of the page").inputValue()).toBe("Lights");
  await form.getByLabel("Name of the page").fill("Hall");
  await form.getByRole("button", { name: "Matrix" }).click();
  await form.getByRole("button", { name: /^Phone/ }).click();
  await form.getByRole("button", { name: "OK" }).click();
  await page.locator(".sheet .part").first().waitFor();
  await save(page);
  await page.goto(`${host.url}/#/panel`);
  await page.getByRole("button", { name: "Laptop everywhere" }).waitFor();
  expect(JSON.parse(host.file("layout.json"))).toMatchObject({ pages: [{ name: "Hall", width: 390, height: 844 }] });
  expect(errors).toEqual([]);
});
