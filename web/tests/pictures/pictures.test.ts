/** Screenshots of every screen in both languages and three sizes, for inspection and for the documentation. */
import { mkdirSync } from "node:fs";
import { join } from "node:path";
import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser, Page } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { newPage, screens, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";

const root = join(import.meta.dirname, "../../..");
const folder = process.env["PICTURES"] ?? join(root, "build/pictures");

let browser: Browser;
let host: Host;
let projector: TcpDevice;
let matrix: TcpDevice;

beforeAll(async () => {
  mkdirSync(folder, { recursive: true });
  browser = await startBrowser();
  host = await Host.start();
  [projector, matrix] = [await TcpDevice.start(), await TcpDevice.start()];
  await host.addTcp("Projector", projector.port);
  await host.addTcp("Matrix", matrix.port);
  await host.post("setCentralControlWebLayout", { data: sample.layout });
  await host.post("updateComponentInteraction", { data: sample.interactions });
});

afterAll(async () => {
  await browser.close();
  await Promise.all([projector[Symbol.asyncDispose](), matrix[Symbol.asyncDispose](), host[Symbol.asyncDispose]()]);
});

async function setLanguage(page: Page, name: string): Promise<void> {
  await page.goto(`${host.url}/#/settings`);
  await page.locator(".connection.open").waitFor();
  await page.getByRole("radio", { name }).click();
  await page.getByRole("radio", { name, checked: true }).waitFor();
}

type Step = [name: string, hash: string, act?: (page: Page) => Promise<void>];

const steps: Step[] = [
  ["pages", "#/pages"],
  ["editor", "#/edit/p-hall"],
  [
    "editor-selected",
    "#/edit/p-hall",
    async (page) => {
      const box = (await page.locator(".sheet .part").nth(1).boundingBox())!;
      await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
      const open = page.locator(".switches button").last();
      if (await open.isVisible()) await open.click();
      await page.locator("aside.right").evaluate((aside) => aside.scrollTo(0, 0));
    },
  ],
  [
    "command",
    "#/edit/p-hall",
    async (page) => {
      const box = (await page.locator(".sheet .part").nth(1).boundingBox())!;
      await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
      const open = page.locator(".switches button").last();
      if (await open.isVisible()) await open.click();
      await page.locator("ol .what").first().click();
    },
  ],
  [
    "problems",
    "#/edit/p-hall",
    async (page) => {
      const open = page.locator(".switches button").first();
      if (await open.isVisible()) await open.click();
      await page.locator("#tab-problems").click();
    },
  ],
  ["keys", "#/edit/p-hall", async (page) => page.keyboard.press("?")],
  ["page-new", "#/pages", async (page) => page.locator(".head .primary").click()],
  [
    "import",
    "#/pages",
    async (page) => {
      await page.locator(".head .button").first().click();
      await page.locator("dialog input").setInputFiles(join(root, "demo/sample_project.json"));
      await page.locator("dialog dl").waitFor();
    },
  ],
  ["interfaces", "#/interfaces"],
  ["interface-new", "#/interfaces", async (page) => page.locator(".head .primary").click()],
  ["materials", "#/materials"],
  ["settings", "#/settings"],
  ["panel", "#/panel/p-hall"],
  [
    "panel-failed",
    "#/panel/p-hall",
    async (page) => {
      await page.locator(".part.is-switch").click();
      await page.locator(".message").waitFor();
    },
  ],
  [
    "panel-confirm",
    "#/panel/p-hall",
    async (page) => {
      await page.locator(".part.is-button").nth(1).click();
      await page.locator("dialog").waitFor();
    },
  ],
  // The last one: its page gets no connection any more.
  [
    "panel-away",
    "#/panel/p-hall",
    async (page) => {
      await page.evaluate(() => dispatchEvent(new Event("offline")));
      await page.locator(".veil").waitFor();
    },
  ],
];

const languages = { en: "English", zh: "中文" };
const wanted = (process.env["ONLY"] ?? "").split(",").filter(Boolean);

for (const [language, word] of Object.entries(languages)) {
  for (const [size, options] of Object.entries(screens)) {
    for (const theme of size === "tablet" ? (["light", "dark"] as const) : (["light"] as const)) {
      it(`${language} ${size} ${theme}`, async () => {
        const { page, context, errors } = await newPage(browser, { ...options, colorScheme: theme });
        await setLanguage(page, word);
        for (const [name, hash, act] of steps) {
          if (wanted.length && !wanted.includes(name)) continue;
          await page.goto("about:blank");
          await page.goto(`${host.url}/${hash}`);
          await page.locator(".connection.open").waitFor();
          if (hash.startsWith("#/panel")) await page.locator(".part").first().waitFor();
          if (name === "panel-away") await page.routeWebSocket(/./, (socket) => void socket.close());
          await act?.(page);
          await page.evaluate(() =>
            document.fonts.ready.then(
              () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))),
            ),
          );
          await page.screenshot({
            path: join(folder, `${name}-${language}-${size}-${theme}.png`),
            animations: "disabled",
          });
        }
        await context.close();
        expect(errors).toEqual([]);
      });
    }
  }
}
