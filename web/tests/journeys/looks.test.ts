import { expect, it } from "vitest";
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { axeFindings } from "../support/axe.ts";
import { Host } from "../support/host.ts";

it("a theme and a style reach the panel, and are undone", async () => {
  await using host = await Host.start();
  await using browser = { it: await startBrowser(), [Symbol.asyncDispose]: () => browser.it.close() };
  const box = { type: "button", y: 100, width: 200, height: 90 };
  const components = ["Start", "Stop", "Mute"].map((text, id) => ({ ...box, id: id + 1, x: 220 * id, look: { text } }));
  const pages = [{ id: "p1", name: "Hall", width: 1280, height: 800, components }];
  await host.post("setCentralControlWebLayout", { data: { form: "control pages", version: 1, pages } });

  const { page, errors, context } = await newPage(browser.it);
  await page.goto(`${host.url}/#/edit/p1`);
  await connected(page);
  await page.getByRole("button", { name: "Theme", exact: true }).click();
  await page.getByRole("radio", { name: "Deep blue" }).click();
  expect(await axeFindings(page)).toEqual([]);
  await page.getByRole("button", { name: "Close" }).last().click();
  await page.getByRole("tab", { name: "List" }).click();
  await page.getByRole("tabpanel").getByRole("button", { name: "Start" }).click();
  await page.getByRole("tab", { name: "Look" }).click();
  await page.getByRole("radio", { name: "Primary" }).click();
  await page.getByRole("button", { name: "Fill" }).click();
  expect(await axeFindings(page)).toEqual([]);
  await page.getByRole("button", { name: "On this page (2)" }).click();
  await page.getByText("2 components have the look now.").waitFor();
  await save(page);

  const panel = await context.newPage();
  await panel.goto(`${host.url}/#/panel`);
  const styles = async (name: string) =>
    panel.getByRole("button", { name, exact: true }).evaluate((one) => {
      const { backgroundColor, color } = getComputedStyle(one);
      return [backgroundColor, color, getComputedStyle(one.closest("main")!).backgroundImage];
    });
  const primary = ["rgb(47, 212, 245)", "rgb(11, 17, 22)", expect.stringContaining("rgb(13, 43, 82)")];
  expect(await styles("Start")).toEqual(primary);
  expect(await styles("Mute")).toEqual(primary);

  for (const _ of ["all", "style", "theme"]) await page.getByRole("button", { name: "Undo" }).first().click();
  await save(page);
  await panel.reload();
  expect((await styles("Mute")).slice(1)).toEqual(["rgb(22, 32, 42)", "none"]);
  expect(errors).toEqual([]);
});
