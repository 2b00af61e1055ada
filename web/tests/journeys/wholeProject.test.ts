import { readFileSync } from "node:fs";
import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { axeFindings } from "../support/axe.ts";
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { selectButton, storeSample } from "../support/places.ts";

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
  // The list leads to the command, so the tab with it is open.
  await page.getByRole("tab", { name: "Look" }).click();
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

it("the commands of a device come from a table, are kept with the project, and are offered to a command", async () => {
  await using host = await start();
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/interfaces`);
  await connected(page);
  await page.getByRole("button", { name: "Commands of this device: Projector" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByLabel("Paste a table").fill("Lamp;LAMP?\\r\nMute;4D 5;hex\nBlank;4D 05 0;hexa\n=Zoom;5A 01;hex");
  await dialog.getByText("Line 3: “hexa” is no format.").waitFor();
  expect((await axeFindings(page)).join("\n")).toBe("");
  await dialog.getByRole("button", { name: "Take 3 commands" }).click();
  await page.getByText("The list of Projector has 3 commands now.").waitFor();
  await save(page);
  expect(JSON.stringify(await host.read("getPageLayoutInfo"))).toContain('"content":"LAMP?\\r"');

  await page.getByRole("button", { name: "Commands of this device: Projector" }).click();
  const [saved] = await Promise.all([
    page.waitForEvent("download"),
    dialog.getByRole("button", { name: "Save as a table (CSV)" }).click(),
  ]);
  expect(readFileSync(await saved.path(), "utf8").split("\r\n")[3]).toBe("'=Zoom,5A 01,hex,none,UTF-8");

  await page.goto(`${host.url}/#/edit/p-hall`);
  await selectButton(page);
  await page.getByRole("tab", { name: "Commands" }).click();
  await page.getByRole("button", { name: "New command" }).click();
  await dialog.getByRole("button", { name: "Choose from the list of the device (3)" }).click();
  await dialog.getByLabel("Search name or content").fill("lamp");
  expect((await axeFindings(page)).join("\n")).toBe("");
  await dialog.getByRole("button", { name: "Lamp LAMP?\\r" }).click();
  const values = [dialog.getByLabel("Name of the command"), dialog.locator("#content"), dialog.getByLabel("Ends with")];
  expect(await Promise.all(values.map((one) => one.inputValue()))).toEqual(["Lamp", "LAMP?", "\r"]);
  expect(errors).toEqual([]);
});
