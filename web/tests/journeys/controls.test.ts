/** The author's controls, for those who use the keyboard or hear the page. */
import { afterAll, beforeAll, beforeEach, afterEach, describe, expect, it } from "vitest";
import type { Browser, Locator, Page } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected, newPage, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { storeSample } from "../support/places.ts";

let browser: Browser;
let host: Host;
let page: Page;
let errors: string[];
beforeAll(async () => {
  browser = await startBrowser();
  host = await Host.start();
  await storeSample(host);
});
beforeEach(async () => ({ page, errors } = await newPage(browser)));
afterEach(async () => {
  await page.context().close();
  expect(errors).toEqual([]);
});
afterAll(async () => {
  await browser.close();
  await host[Symbol.asyncDispose]();
});

async function open(hash: string): Promise<void> {
  await page.goto(`${host.url}/${hash}`);
  await connected(page);
}

describe("arrow keys", () => {
  it("lead through the tabs of the editor, and move no component then", async () => {
    await open("#/edit/p-hall");
    await page.keyboard.press("Control+A");
    await page.getByRole("tab", { name: "Add" }).focus();
    for (const step of ["ArrowRight List", "End Problems", "ArrowRight Add", "ArrowLeft Problems", "Home Add"]) {
      const [key, name] = step.split(" ") as [string, string];
      await page.keyboard.press(key);
      await page.getByRole("tab", { name, selected: true }).and(page.locator(":focus")).waitFor();
      await page.getByRole("tabpanel", { name }).waitFor();
    }
    // One place of the Tab key for all tabs: from the chosen one it leads on, into what it shows.
    await page.keyboard.press("Tab");
    await page.getByRole("tabpanel").locator(":focus").waitFor();
    await page.getByRole("button", { name: "Saved" }).waitFor();
  });

  it("choose in a radio group, around its ends", async () => {
    await open("#/settings");
    await page.getByRole("radio", { name: "As the system" }).focus();
    for (const step of ["ArrowUp Dark", "ArrowRight As", "ArrowDown Light", "ArrowLeft As", "End Dark", "Home As"]) {
      const [key, name] = step.split(" ") as [string, string];
      await page.keyboard.press(key);
      await page.getByRole("radio", { name, checked: true }).and(page.locator(":focus")).waitFor();
    }
    // Tab leaves the group at once.
    await page.keyboard.press("Tab");
    await page.locator(":focus:not([role=radio])").waitFor();
  });
});

/** Waits until a field is marked, and is described by this sentence; then mends it. */
async function isToldWith(field: Locator, sentence: string, mend: () => Promise<void>): Promise<void> {
  const marked = field.and(page.locator("[aria-invalid=true]"));
  await marked.waitFor();
  expect(await described(field)).toContain(sentence);
  await mend();
  await marked.waitFor({ state: "detached" });
  expect(await described(field)).not.toContain(sentence);
}

/** The text of the elements that describe a field. Each of them has to be there, and once. */
const described = (field: Locator) =>
  field.evaluate((element) =>
    (element.getAttribute("aria-describedby") ?? "")
      .split(" ")
      .filter(Boolean)
      .map((id) => {
        const found = document.querySelectorAll(`[id="${id}"]`);
        if (found.length !== 1) throw new Error(`${found.length} elements are called ${id}`);
        return found[0]!.textContent;
      })
      .join(" "),
  );

describe("what is wrong with a field is told with the field", () => {
  it("of an interface", async () => {
    await open("#/interfaces");
    await page.getByRole("button", { name: "New interface" }).click();
    const field = (label: string) => page.getByRole("dialog").getByLabel(label, { exact: true });
    const store = page.getByRole("button", { name: "Try and store" });
    await field("Port").fill("70000");
    await store.click();
    await isToldWith(field("Name"), "This is needed.", () => field("Name").fill("A"));
    await isToldWith(field("Address of the device"), "This is needed.", () =>
      field("Address of the device").fill("10.0.0.7"),
    );
    await isToldWith(field("Port"), "A port is a whole number", () => field("Port").fill("4352"));
    await page.getByRole("dialog").getByText("Serial port", { exact: true }).click();
    await field("Speed (baud)").fill("");
    const stopBits = page.getByRole("combobox", { name: "Stop bits" });
    await stopBits.selectOption("1.5");
    await isToldWith(field("Serial port"), "This is needed.", () => field("Serial port").fill("COM1"));
    await isToldWith(field("Speed (baud)"), "This is needed.", () => field("Speed (baud)").fill("9600"));
    await isToldWith(stopBits, "One and a half stop bits", async () => void (await stopBits.selectOption("1")));
  });

  it("of a page and of a file", async () => {
    await open("#/pages");
    await page.getByRole("button", { name: "New page" }).click();
    const [width, height] = [page.getByLabel("Width"), page.getByLabel("Height")];
    await width.fill("1");
    expect(await described(height)).toBe("");
    const name = page.getByLabel("Name of the page");
    await name.fill(" ");
    await isToldWith(name, "This is needed.", () => name.fill("Hall"));
    await isToldWith(width, "Width and height are whole numbers", () => width.fill("800"));
    await page.getByRole("button", { name: "Cancel" }).click();

    await page.getByRole("button", { name: "Import" }).click();
    const file = page.getByRole("dialog").locator("input");
    const choose = (text: string) =>
      file.setInputFiles({ name: "x.json", mimeType: "application/json", buffer: Buffer.from(text) });
    await choose("{}");
    await isToldWith(file, "This is no exported project or page.", () => choose(JSON.stringify(sample)));
  });

  it("of a component and its commands", async () => {
    const lamps = {
      netPortName: "Lamps",
      netMode: "UDP",
      ipAddress: "",
      port: 0,
      dstIpAddress: "127.0.0.1",
      dstPort: 9,
    };
    await host.post("addNetPortInfo", { data: { info: lamps } });
    await open("#/edit/p-hall");
    const name = page.getByLabel("Name of the page");
    await name.fill("");
    await isToldWith(name, "This is needed.", () => name.press("Tab"));
    expect(await name.inputValue()).toBe("Hall");
    await page.getByRole("tab", { name: "List" }).click();
    await page.getByRole("tabpanel").getByRole("button", { name: "On", exact: true }).click();
    const width = page.getByRole("complementary", { name: "Properties" }).getByLabel("Width");
    const before = await width.inputValue();
    await width.fill("1");
    // Leaving the field brings back the number that counts.
    await isToldWith(width, "A number from 8 to", () => width.press("Tab"));
    expect(await width.inputValue()).toBe(before);

    await page.getByRole("tab", { name: "Commands" }).click();
    await page.getByRole("button", { name: "New command" }).click();
    const content = page.locator("#content");
    expect(await described(content)).not.toBe("");
    await page.getByRole("button", { name: "OK" }).click();
    await isToldWith(content, "This is needed.", () => content.fill("A"));
    await content.fill("\\q");
    await isToldWith(content, "there is no such escape", () => content.fill("\\xff"));
    await page.getByRole("radio", { name: "Hexadecimal" }).click();
    await content.fill("FF");
    await page.getByRole("radio", { name: "Hexadecimal" }).press("ArrowLeft");
    await isToldWith(page.getByRole("radiogroup", { name: "Format" }), "without loss", () => content.fill("41"));
  });

  it("of the WebSocket port", async () => {
    await open("#/settings");
    const port = page.getByRole("spinbutton", { name: "WebSocket port" });
    await port.fill("70000");
    await page.getByRole("button", { name: "Apply" }).click();
    await isToldWith(port, "A port is a whole number", () => port.fill("8081"));
  });
});
