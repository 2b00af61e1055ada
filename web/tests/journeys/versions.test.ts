/** Earlier states: kept, named, restored and taken back. */
import type { Browser } from "playwright-core";
import { afterAll, beforeAll, expect, it } from "vitest";
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { storeSample } from "../support/places.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

it("a version is named, restored after a change, and the restoring taken back", async () => {
  await using host = await Host.start();
  await storeSample(host);
  const { page, errors } = await newPage(browser);
  const names = async () => (await host.read("getPageLayoutInfo")).pages.map((one) => one.name);
  const before = await names();
  await page.goto(`${host.url}/#/versions`);
  await connected(page);
  await page.getByRole("button", { name: "Keep the present state" }).click();
  // The name is asked for at once.
  await page.locator("input[id^=name-]:focus").waitFor();
  await page.keyboard.type("Before the fair");
  await page.keyboard.press("Enter");
  const restore = page.getByRole("button", { name: "Restore: Before the fair" });
  await restore.waitFor();

  await page.goto(`${host.url}/#/pages`);
  await page.getByRole("button", { name: `Delete: ${before[0]!}` }).click();
  await page.goto(`${host.url}/#/versions`);
  await restore.click();
  await page.getByText("Save your changes first, or undo them.").waitFor();
  await save(page);
  const after = before.slice(1);
  expect(await names()).toEqual(after);

  await page.getByRole("button", { name: "Compare: Before the fair" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByRole("listitem").filter({ hasText: before[0]! }).getByText("comes back").waitFor();
  await dialog.getByRole("button", { name: "Restore" }).click();
  await dialog.getByText("What is there now is kept").waitFor();
  await dialog.getByRole("button", { name: "Restore" }).click();
  const notice = page.locator(".notice").filter({ hasText: "Restored." });
  await notice.waitFor();
  expect(await names()).toEqual(before);
  // This author sees it too, and the name has stayed through a reload.
  await page.getByRole("link", { name: "Pages" }).first().click();
  await page.getByRole("link", { name: before[0]!, exact: true }).first().waitFor();
  await notice.getByRole("button", { name: "Undo" }).click();
  await page.getByText("Taken back.").waitFor();
  expect(await names()).toEqual(after);
  await page.goto(`${host.url}/#/versions`);
  await page.reload();
  await restore.waitFor();
  await page.locator("figcaption").filter({ hasText: before[0]! }).first().waitFor();
  expect(errors).toEqual([]);
});
