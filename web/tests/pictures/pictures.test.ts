/** Screenshots of every screen in both languages and three sizes, for inspection and for the documentation. */
import { mkdirSync } from "node:fs";
import { join } from "node:path";
import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser, Page } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected, newPage, screens, startBrowser } from "../support/browser.ts";
import { SerialDevice, TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";
import { goTo, places, popUp, storeQuestions, storeSample } from "../support/places.ts";

const folder = process.env["PICTURES"] ?? join(import.meta.dirname, "../../../build/pictures");

let browser: Browser;
let host: Host;
let projector: TcpDevice;
let matrix: TcpDevice;
let relay: SerialDevice;

beforeAll(async () => {
  mkdirSync(folder, { recursive: true });
  browser = await startBrowser();
  [projector, matrix, relay] = [await TcpDevice.start(), await TcpDevice.start(), await SerialDevice.start()];
  host = await Host.start({ COM7: relay.path });
  await host.addTcp("Projector", projector.port);
  await host.addTcp("Matrix", matrix.port);
  await matrix.stop(); // a press fails
  await host.post("addComInfo", { data: { info: sample.interfaces[2]!.comInfo } });
  await storeSample(host, [popUp]);
  await storeQuestions(host, (await host.read("getConfigList")).configList[0]!.nodeId, projector);
});

afterAll(async () => {
  await browser.close();
  await Promise.all([projector, matrix, relay, host].map((one) => one[Symbol.asyncDispose]()));
});

async function setLanguage(page: Page, name: string): Promise<void> {
  await page.goto(`${host.url}/#/settings`);
  await connected(page);
  await page.getByRole("radio", { name }).click();
  await page.getByRole("radio", { name, checked: true }).waitFor();
}

const languages = { en: "English", zh: "中文" };
const wanted = (process.env["ONLY"] ?? "").split(",").filter(Boolean);

for (const [language, word] of Object.entries(languages)) {
  for (const [size, options] of Object.entries(screens)) {
    for (const theme of size === "tablet" ? (["light", "dark"] as const) : (["light"] as const)) {
      it(`${language} ${size} ${theme}`, async () => {
        const { page, context, errors } = await newPage(browser, { ...options, colorScheme: theme });
        await setLanguage(page, word);
        for (const place of places) {
          if (wanted.length && !wanted.includes(place[0])) continue;
          await goTo(place, page, host);
          await page.evaluate(() =>
            document.fonts.ready.then(
              () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))),
            ),
          );
          await page.screenshot({
            path: join(folder, `${place[0]}-${language}-${size}-${theme}.png`),
            animations: "disabled",
          });
        }
        await context.close();
        expect(errors).toEqual([]);
      });
    }
  }
}
