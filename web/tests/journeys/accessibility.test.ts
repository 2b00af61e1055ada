import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser, Page } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected, newPage, screens, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

let browser: Browser;
let host: Host;
beforeAll(async () => {
  browser = await startBrowser();
  host = await Host.start();
  await host.post("setCentralControlWebLayout", { data: sample.layout });
  await host.post("updateComponentInteraction", { data: sample.interactions });
});
afterAll(async () => {
  await browser.close();
  await host[Symbol.asyncDispose]();
});

async function selectButton(page: Page): Promise<void> {
  const [parts, properties] = [page.locator(".switches button").first(), page.locator(".switches button").last()];
  const isNarrow = await parts.isVisible();
  if (isNarrow) await parts.click();
  await page.getByRole("tab", { name: "List" }).click();
  await page.getByRole("tabpanel").getByRole("button", { name: "On", exact: true }).click();
  if (isNarrow) await properties.click();
}

const places: [string, string, ((page: Page) => Promise<void>)?][] = [
  ["pages", "#/pages"],
  ["a new page", "#/pages", (page) => page.getByRole("button", { name: "New page" }).click()],
  ["the editor", "#/edit/p-hall"],
  ["properties", "#/edit/p-hall", selectButton],
  [
    "a command",
    "#/edit/p-hall",
    async (page) => {
      await selectButton(page);
      await page.locator("ol .what").first().click();
      await page.locator("#content").fill("\\q");
    },
  ],
  ["interfaces", "#/interfaces"],
  [
    "an interface that can't be right",
    "#/interfaces",
    async (page) => {
      await page.getByRole("button", { name: "New interface" }).click();
      await page.getByRole("button", { name: "Try and store" }).click();
    },
  ],
  ["a file to import", "#/pages", (page) => page.getByRole("button", { name: "Import" }).click()],
  ["materials", "#/materials"],
  ["settings", "#/settings"],
  ["the panel", "#/panel/p-hall"],
  [
    "a failed press",
    "#/panel/p-hall",
    async (page) => {
      await page.getByRole("switch").click();
      await page.getByRole("alert").waitFor();
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
  for (const [name, hash, act] of places) {
    await page.goto("about:blank");
    await page.goto(`${host.url}/${hash}`);
    await connected(page);
    if (hash.startsWith("#/panel")) await page.locator(".part").first().waitFor();
    await act?.(page);
    await page.addScriptTag({ content: axe });
    const violations = await page.evaluate(async () => {
      const result = await (
        window as unknown as {
          axe: { run: () => Promise<{ violations: { id: string; impact: string; nodes: { html: string }[] }[] }> };
        }
      ).axe.run();
      return result.violations.filter((one) => one.impact !== "minor");
    });
    found.push(
      ...violations.map((one) => `${name}: ${one.id}: ${one.nodes.map((node) => node.html.slice(0, 160)).join(" | ")}`),
    );
  }
  await context.close();
  expect(found).toEqual([]);
});
