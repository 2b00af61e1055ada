import { type Browser, type BrowserContext, chromium, type Page } from "playwright-core";
import { waitFor } from "./wait.ts";

const flags = [
  "--no-sandbox",
  "--disable-gpu",
  "--disable-quic",
  "--no-first-run",
  "--disable-background-networking",
  "--disable-component-update",
  "--disable-sync",
];

/** Debian's Chromium. */
export function startBrowser(more: string[] = []): Promise<Browser> {
  return chromium.launch({ executablePath: "/usr/bin/chromium", args: [...flags, ...more] });
}

export const screens = {
  tablet: { viewport: { width: 1280, height: 800 } },
  hd: { viewport: { width: 1920, height: 1080 } },
  phone: { viewport: { width: 390, height: 844 }, hasTouch: true, isMobile: true },
} as const;

/** Waits until the server takes what this page writes: before that it refuses. */
export function connected(page: Page): Promise<void> {
  return page.locator(".connection.open").waitFor();
}

/** Stores what was changed. Waits for the change first, since without one nothing is stored. */
export async function save(page: Page): Promise<void> {
  await page.getByRole("button", { name: "Save", exact: true }).waitFor();
  await page.keyboard.press("Control+S");
  await page.getByRole("button", { name: "Saved" }).waitFor();
}

/** Waits until the browser has kept what is unsaved. */
export function draftKept(page: Page): Promise<unknown> {
  return waitFor("the draft", () =>
    page.evaluate(
      () =>
        new Promise<number>((resolve) => {
          const request = indexedDB.open("control-author");
          request.onsuccess = () => {
            const count = request.result.transaction("drafts").objectStore("drafts").count();
            count.onsuccess = () => {
              request.result.close();
              resolve(count.result);
            };
          };
        }),
    ),
  );
}

/** A page in a profile of its own. Errors that nothing caught are collected, for the test to look at. */
export async function newPage(
  browser: Browser,
  options: Parameters<Browser["newContext"]>[0] = screens.tablet,
): Promise<{ page: Page; context: BrowserContext; errors: string[] }> {
  const context = await browser.newContext({ locale: "en-GB", ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(20_000);
  const errors: string[] = [];
  page.on("pageerror", (error) => errors.push(String(error)));
  return { page, context, errors };
}

/** Fingers for a page: tells it which touch it from now on, by their places on the screen, always in the same order. */
export async function fingersOn(page: Page) {
  const client = await page.context().newCDPSession(page);
  return (type: "touchStart" | "touchMove" | "touchEnd", ...places: [number, number][]) =>
    client.send("Input.dispatchTouchEvent", { type, touchPoints: places.map(([x, y], id) => ({ x, y, id })) });
}
