import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { storeSample } from "../support/places.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

/** A host with the sample project and two interfaces, which take the numbers of the sample's first two. */
async function start(): Promise<Host> {
  const host = await Host.start();
  await storeSample(host);
  for (const [at, netPortName] of ["Projector", "Matrix"].entries()) {
    const info = { ...newNetInfo, netMode: "UDP", netPortName, dstIpAddress: "127.0.0.1", dstPort: 4001 + at };
    await host.post("addNetPortInfo", { data: { info } });
  }
  return host;
}

it("the commands of an interface are listed, lead to their components, and move to another in one step", async () => {
  await using host = await start();
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/interfaces`);
  await connected(page);
  await page.getByRole("button", { name: "Relay: 3 commands on 1 page" }).click();
  await page.getByRole("button", { name: "Move commands to…" }).click();
  await page.getByLabel("To the interface").selectOption({ label: "Matrix – 127.0.0.1:4002" });
  await page.getByRole("button", { name: "Move 3 commands" }).click();
  await page.getByText("3 commands go through Matrix now.").waitFor();
  await page.getByRole("button", { name: "Matrix: 6 commands on 2 pages" }).waitFor();
  await page.locator(".notices").getByRole("button", { name: "Undo" }).click();
  await page.getByRole("button", { name: "Matrix: 3 commands on 2 pages" }).click();
  await page.getByRole("button", { name: "Camera" }).click();
  await page.getByRole("heading", { name: "Button" }).waitFor();
  expect(await page.getByLabel("Text", { exact: true }).inputValue()).toBe("Camera");
  expect(errors).toEqual([]);
});

it("what is found on all pages is replaced where it is chosen and stays valid, and undone in one step", async () => {
  await using host = await start();
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/edit/p-hall`);
  await connected(page);
  await page.keyboard.press("Control+F");
  const dialog = page.getByRole("dialog", { name: "Find and replace" });
  await dialog.waitFor();
  await page.keyboard.type("A0");
  await dialog.getByLabel("Replace with").fill("A");
  await dialog.getByText("Found in 3 places on 1 page.").waitFor();
  await dialog.getByLabel("Replace with").fill("XY");
  await dialog.getByText("this is no hexadecimal digit.").first().waitFor();
  expect(await dialog.getByRole("button", { name: "Replace 0" }).isDisabled()).toBe(true);
  await dialog.getByLabel("Replace with").fill("B0");
  await dialog.getByRole("checkbox", { name: "Screen is up" }).first().uncheck();
  await dialog.getByRole("button", { name: "Replace 2" }).click();
  await page.getByText("Replaced in 2 places.").waitFor();
  await save(page);
  const stored = JSON.stringify(await host.read("getComponentInteractionInfo"));
  expect([stored.split("B0 01").length, stored.split("A0 0").length]).toEqual([3, 2]);
  await page.keyboard.press("Control+Z");
  await save(page);
  expect(JSON.stringify(await host.read("getComponentInteractionInfo"))).not.toContain("B0 0");
  expect(errors).toEqual([]);
});
