import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { connected, newPage, startBrowser } from "../support/browser.ts";
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
