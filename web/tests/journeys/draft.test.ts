import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser, Page } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected, draftKept, newPage, save, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

const nameField = (page: Page) => page.getByRole("complementary").last().getByLabel("Name of the page");

/** The editor after a reload, with the page renamed in the draft. */
async function reloaded(host: Host, name: string): Promise<{ page: Page; errors: string[] }> {
  await host.post("setCentralControlWebLayout", { data: sample.layout });
  const opened = await newPage(browser);
  const { page } = opened;
  await page.goto(`${host.url}/#/edit/p-hall`);
  await connected(page);
  await nameField(page).fill(name);
  await draftKept(page);
  await page.reload();
  await page.getByText(/^Your unsaved work of .* is back\.$/).waitFor();
  return opened;
}

it("unsaved work comes back after a reload, and its notice can be closed", async () => {
  await using host = await Host.start();
  const { page, errors } = await reloaded(host, "Foyer");
  const notice = page.locator(".notice");
  await notice.getByRole("button", { name: "Close" }).click();
  await notice.waitFor({ state: "detached" });
  expect(await nameField(page).inputValue()).toBe("Foyer");
  expect(errors).toEqual([]);
});

it("the offer to discard unsaved work goes with the first edit", async () => {
  await using host = await Host.start();
  const { page, errors } = await reloaded(host, "Foyer");
  const notice = page.locator(".notice");
  await nameField(page).fill("Lobby");
  await notice.waitFor({ state: "detached" });
  await save(page);
  expect((await host.read("getPageLayoutInfo")).pages[0]?.name).toBe("Lobby");
  expect(errors).toEqual([]);
});
