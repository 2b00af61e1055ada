import { join } from "node:path";
import type { Page } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected } from "./browser.ts";
import type { TcpDevice } from "./equipment.ts";
import type { Host } from "./host.ts";

/** A state of the application that shows something of its own, and what leads there; in any language. */
export type Place = [name: string, hash: string, act?: (page: Page) => Promise<void>];

/** Opens one of the two columns of the editor where they lie over the canvas. */
async function openColumn(page: Page, place: "first" | "last"): Promise<void> {
  await page.locator(".sheet").waitFor();
  const open = page.locator(".switches button")[place]();
  if (await open.isVisible()) await open.click();
}

/** Selects the first button in the editor of the sample's first page. */
export async function selectButton(page: Page): Promise<void> {
  const box = (await page.locator(".sheet .part").nth(1).boundingBox())!;
  await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
  await openColumn(page, "last");
}

export async function openCommand(page: Page): Promise<void> {
  await selectButton(page);
  await page.locator("#about-commands").click();
  await page.locator("ol .what").first().click();
}

/** Opens a dialog of a screen by one of the buttons in its head, or a panel's by one of its components. */
const click = (selector: string, at: number, shown: string) => async (page: Page) => {
  await page.locator(selector).nth(at).click();
  await page.locator(shown).waitFor();
};

/** Waits for what the projector says. */
const says = (part: string, text: string) => (page: Page) =>
  page.locator(`.part.${part}`).getByText(text, { exact: true }).first().waitFor();

/** All screens, with the sample project and the pop-up on the host. */
export const places: readonly Place[] = [
  ["pages", "#/pages"],
  ["editor", "#/edit/p-hall"],
  [
    "editor-selected",
    "#/edit/p-hall",
    async (page) => {
      await selectButton(page);
      await page.locator("aside.right").evaluate((aside) => aside.scrollTo(0, 0));
    },
  ],
  ["command", "#/edit/p-hall", openCommand],
  [
    "problems",
    "#/edit/p-hall",
    async (page) => {
      await openColumn(page, "first");
      await page.locator("#tab-problems").click();
    },
  ],
  [
    "find",
    "#/edit/p-hall",
    async (page) => {
      await page.keyboard.press("Control+F");
      await page.locator("dialog input[type=search]").fill("A0");
      await page.locator("dialog input:not([type])").fill("XY");
    },
  ],
  [
    "icons",
    "#/edit/p-hall",
    async (page) => {
      await selectButton(page);
      await page.locator("button.icon-field").click();
      await page.locator("dialog [role=option]").first().waitFor();
    },
  ],
  ["keys", "#/edit/p-hall", (page) => page.keyboard.press("?")],
  ["page-new", "#/pages", click(".head .primary", 0, "dialog")],
  ["themes", "#/pages", click(".head .button", 2, "dialog")],
  [
    "import",
    "#/pages",
    async (page) => {
      await page.locator(".head .button").first().click();
      await page.locator("dialog input").setInputFiles(join(import.meta.dirname, "../../../demo/sample_project.json"));
      await page.locator("dialog dl").waitFor();
    },
  ],
  ["versions", "#/versions", click(".head .primary", 0, "figure >> nth=0")],
  ["version-compare", "#/versions", click(".card .tools .button", 0, "dialog .hint")],
  ["interfaces", "#/interfaces"],
  ["interface-uses", "#/interfaces", click("main button[aria-expanded]", 0, "main [aria-expanded=true]")],
  ["interface-terminal", "#/interfaces", click("main .tools button", 0, "dialog [role=log]")],
  ["interface-values", "#/interfaces", click("main .tools button", 1, "dialog ol")],
  ["interface-new", "#/interfaces", click(".head .primary", 0, "dialog")],
  ["materials", "#/materials"],
  ["settings", "#/settings"],
  ["phone-layout", "#/edit/p-hall", (page) => page.locator(".toolbar .icon-button").nth(2).click()],
  ["panel", "#/panel/p-hall", says("is-lamp", "on")],
  ["panel-states", "#/panel/p-states", says("is-gauge", "1280")],
  [
    "panel-failed",
    "#/panel/p-hall",
    async (page) => {
      await page.getByRole("slider").press("End");
      await page.locator(".message").waitFor();
    },
  ],
  ["panel-confirm", "#/panel/p-hall", click(".part.is-button", 1, "dialog")],
  ["panel-popup", "#/panel/p-off", click("dialog .part.is-button", 0, "dialog .message")],
  // The last one: its page gets no connection any more.
  [
    "panel-away",
    "#/panel/p-hall",
    async (page) => {
      await page.routeWebSocket(/./, (socket) => void socket.close());
      await page.evaluate(() => dispatchEvent(new Event("offline")));
      await page.locator(".veil").waitFor();
    },
  ],
];

/** Loads the application anew and goes to a place. */
export async function goTo([, hash, act]: Place, page: Page, host: Host): Promise<void> {
  await page.goto("about:blank");
  await page.goto(`${host.url}/${hash}`);
  await connected(page);
  if (hash.startsWith("#/panel")) await page.locator(".part").first().waitFor();
  await act?.(page);
}

/** A pop-up beside the pages of the sample project. */
export const popUp = {
  ...{ id: "p-off", name: "Switch all off?", place: "popup", width: 480, height: 200 },
  components: [
    { id: 901, type: "link", x: 40, y: 60, width: 180, height: 80, target: "back", look: { text: "Back" } },
    { id: 902, type: "button", x: 260, y: 60, width: 180, height: 80, look: { text: "All off" } },
  ],
};

/** Stores the layout and the commands of the sample project, and these pages after its own. */
export async function storeSample(host: Host, more: object[] = []): Promise<void> {
  const pages = [...sample.layout.pages, ...more];
  await host.post("setCentralControlWebLayout", { data: { ...sample.layout, pages } });
  await host.post("updateComponentInteraction", { data: sample.interactions });
}

/** Stores what the sample asks its projector, which has this interface, and lets the projector answer. */
export async function storeQuestions(host: Host, nodeId: number, projector: TcpDevice): Promise<void> {
  const answers: Record<string, string> = { POWR: "1", INPT: "31", LAMP: "1280 1" };
  projector.answer = (bytes) =>
    [...bytes.matchAll(/%1(\w+) \?\r/g)].map(([, name]) => `%1${name!}=${answers[name!]!}\r`).join("");
  const devices = [{ ...sample.interfaces[0]!.device, nodeId }];
  const code = await host.post("/api/equipment/config", { data: { version: 1, devices } });
  if (code !== 20000) throw new Error(`the questions were refused: ${code}`);
}
