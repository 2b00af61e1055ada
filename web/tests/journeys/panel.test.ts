import { writeFileSync } from "node:fs";
import { afterAll, beforeAll, beforeEach, afterEach, describe, expect, it } from "vitest";
import type { Browser, Page } from "playwright-core";
import { connected, fingersOn, newPage, screens, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";
import { longest, waitFor } from "../support/wait.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

const base = { y: 100, width: 120, height: 80 };
const components = [
  { ...base, id: 1, type: "button", x: 100, look: { text: "Click" } },
  { ...base, id: 2, type: "button", x: 300, mode: "pressRelease", look: { text: "Hold" } },
  { ...base, id: 3, type: "button", x: 500, mode: "repeat", interval: 50, look: { text: "Repeat" } },
  { ...base, id: 4, type: "button", x: 700, fontFamily: "mono", mode: "long", hold: 2000, look: { text: "Long" } },
  { ...base, id: 5, type: "button", x: 900, confirm: "Really?", look: { text: "Ask" } },
  { ...base, id: 6, type: "switch", x: 100, y: 300, look: { text: "Screen" } },
  { ...base, id: 7, type: "slider", x: 300, y: 300, width: 400, steps: 3, min: 0, max: 2, look: { text: "Volume" } },
  { id: 8, type: "button", x: 100, y: 600, width: 20, height: 20, look: { text: "s" } },
  { ...base, id: 9, type: "link", x: 500, y: 600, target: "p2", look: { text: "Next" } },
  { ...base, id: 11, type: "link", x: 700, y: 600, target: "p4", look: { text: "More" } },
  { ...base, id: 10, type: "button", x: 900, y: 600, mode: "press", look: { text: "Press" } },
];
const above = [
  { ...base, id: 20, type: "button", x: 20, y: 20, look: { text: "Above" } },
  { ...base, id: 21, type: "link", x: 220, y: 20, target: "back", look: { text: "Back" } },
];
/** Each component has a command for each trigger that there is: what it sends tells its own from the others. */
const triggers = [
  "click",
  "press",
  "release",
  "repeat",
  "longPress",
  "on",
  "off",
  "position0",
  "position1",
  "position2",
];

let host: Host;
let device: TcpDevice;
let page: Page;
let errors: string[];

beforeEach(async () => {
  host = await Host.start();
  device = await TcpDevice.start();
  await host.addTcp("Device", device.port);
  const pages = [
    { id: "p1", name: "Hall", width: 1280, height: 800, components },
    { id: "p2", name: "Lobby", components: [] },
    { id: "p3", name: "Spare", place: "hidden", components: [] },
    { id: "p4", name: "More", place: "popup", width: 400, height: 200, components: above },
  ];
  await host.post("setCentralControlWebLayout", {
    data: { form: "control pages", version: 1, startPage: "p1", pages, panel: { swipe: true } },
  });
  const command = { portIndex: 1, controlType: "netPortInfo", commandName: "C" };
  const componentArr = [...components, ...above].map(({ id }) => ({
    componentId: id,
    interactionArr: triggers.map((triggerType) => ({
      triggerType,
      commandArr: [{ ...command, netPortInfo: { content: `<${id}${triggerType}>` } }],
    })),
  }));
  await host.post("updateComponentInteraction", { data: { componentInteractionInfo: { componentArr } } });
  ({ page, errors } = await newPage(browser));
  await page.goto(`${host.url}/#/panel`);
  await connected(page);
  await part("Click").waitFor();
});

afterEach(async () => {
  await page.context().close();
  await device[Symbol.asyncDispose]();
  await host[Symbol.asyncDispose]();
});

const part = (name: string) => page.getByRole("button", { name, exact: true });

async function middle(name: string): Promise<[number, number]> {
  const box = (await part(name).boundingBox())!;
  return [box.x + box.width / 2, box.y + box.height / 2];
}

/** Holds a component until the device has those bytes. */
async function hold(name: string, bytes: string): Promise<void> {
  await page.mouse.move(...(await middle(name)));
  await page.mouse.down();
  await device.has(bytes);
}

describe("a panel", () => {
  it("sends in each way of pressing, and only then", async () => {
    await hold("Click", "");
    await page.locator(".part.pressed").waitFor();
    await page.mouse.move(10, 10);
    await page.mouse.up();
    await part("Click").click();
    await device.has("<1click>");
    await part("Click").and(page.locator(".done")).waitFor();

    await hold("Hold", "<2press>");
    expect(device.bytes).not.toContain("release");
    await page.mouse.move(10, 10);
    await page.mouse.up();
    await device.has("<2press><2release>");

    await hold("Repeat", "<3repeat><3repeat><3repeat>");
    await page.mouse.up();

    await part("Long").click();
    await hold("Long", "<4longPress>");
    await page.mouse.up();

    await part("Ask").click();
    await page.getByRole("dialog").getByRole("button", { name: "Cancel" }).click();
    await part("Ask").click();
    await page.getByRole("dialog").getByRole("button", { name: "Send" }).click();
    await device.has("<5click>");

    await hold("Press", "<10press>");
    await page.mouse.up();

    await page.getByRole("switch").click();
    await device.has("<6on>");
    await page.getByRole("switch", { checked: true }).click();
    await device.has("<6off>");

    const slider = page.getByRole("slider");
    expect(await slider.getAttribute("aria-valuenow")).toBe("1");
    const box = (await slider.boundingBox())!;
    await page.mouse.click(box.x + box.width - 5, box.y + box.height / 2);
    await device.has("<7position2>");
    await slider.press("ArrowLeft");
    await device.has("<7position1>");

    // A target of 20 px takes presses as if it had 48.
    const [x, y] = await middle("s");
    await page.mouse.click(x + 15, y);
    await device.has("<8click>");
    await part("Click").press("Enter");
    await device.has("<8click><1click>");
    const sent = device.bytes.replace(/(<3repeat>)+/, "<3repeat>");
    expect(sent).toBe(
      "<1click><2press><2release><3repeat><4longPress><5click><10press><6on><6off>" +
        "<7position2><7position1><8click><1click>",
    );

    await page.getByRole("button", { name: "Full screen" }).click();
    await page.getByRole("button", { name: "Leave full screen" }).waitFor();
    expect(await page.evaluate(() => document.fullscreenElement?.localName)).toBe("html");
    await part("Next").click();
    await expect.poll(() => page.title(), { timeout: longest }).toBe("Lobby");
    expect(page.url()).toContain("#/panel/p2");
    await page.getByRole("button", { name: "Leave full screen" }).click();
    await page.getByRole("button", { name: "Full screen", exact: true }).waitFor();
    expect(await page.evaluate(() => document.fullscreenElement)).toBeNull();
    expect(errors).toEqual([]);
  });

  it("tells below the page what failed, in the server's words, and what to do", async () => {
    await device.stop();
    await part("Click").click();
    const message = page.locator(".message");
    await message.getByText("Nothing listens there.").waitFor();
    expect(await message.innerText()).toContain("Devicefailed to send C,reason:10061");
    const sheet = (await page.locator(".page").boundingBox())!;
    expect((await message.boundingBox())!.y).toBeGreaterThanOrEqual(sheet.y + sheet.height);
    await page.getByRole("switch").click();
    await page.getByText("2 messages").waitFor();
    expect(await message.first().innerText()).toContain("Screen");
    expect(await page.getByRole("switch").getAttribute("aria-checked")).toBe("false");
    await page.locator(".part.failed").first().waitFor();
    await message.first().getByRole("button", { name: "Close" }).click();
    await message.getByRole("button", { name: "Close" }).click();
    await message.waitFor({ state: "detached" });
  });

  it("loads a shipped font when a page shows it, and no other", async () => {
    const fonts = () =>
      page.evaluate(() => [...document.fonts].filter((one) => one.status === "loaded").map((one) => one.family));
    await waitFor("a font", async () => (await fonts()).length > 0);
    expect(await fonts()).toEqual(["JetBrains Mono"]);
  });

  it("shows a pop-up over the page until it is closed", async () => {
    const popUp = page.getByRole("dialog", { name: "More" });
    const ways: [string, () => Promise<void>][] = [
      ["its cross", () => popUp.getByRole("button", { name: "Close" }).click()],
      ["Escape", () => page.keyboard.press("Escape")],
      ["a touch beside it", () => page.mouse.click(20, 20)],
      ["a link back", () => part("Back").click()],
    ];
    for (const [way, close] of ways) {
      await part("More").click();
      await popUp.waitFor();
      await close();
      await expect.poll(() => popUp.count(), { timeout: longest, message: way }).toBe(0);
    }
    await part("More").click();
    await part("Above").click();
    await device.has("<20click>");
    await device.stop();
    await part("Above").click();
    await popUp.locator(".message").getByText("Nothing listens there.").waitFor();
    expect([await page.title(), errors]).toEqual(["Hall", []]);
  });

  it("refuses presses while the server is away, and reads everything again when it is back", async () => {
    const [x, y] = await middle("Click");
    const sockets: string[] = [];
    page.on("websocket", (socket) => sockets.push(socket.url()));
    await host.stop();
    await page.getByText("Reconnecting…").first().waitFor();
    await page.mouse.click(x, y);
    await page.getByText("Not connected. Nothing was sent.").waitFor();
    await waitFor("two attempts to connect", () => sockets.length >= 2);
    expect(new Set(sockets)).toEqual(new Set([`ws://127.0.0.1:${host.webSocketPort}/`]));
    const layout = host.file("layout.json").replace('"Click"', '"Again"');
    writeFileSync(`${host.userData}/layout.json`, layout);
    await host.launch();
    await part("Again").waitFor();
    await part("Again").click();
    await device.has("<1click>");
    expect(device.bytes).toBe("<1click>");
    expect(errors).toEqual([]);
  });

  it("takes fingers, several at once", async () => {
    const phone = await newPage(browser, screens.phone);
    await phone.page.goto(`${host.url}/#/panel/p1`);
    await connected(phone.page);
    await phone.page.getByRole("button", { name: "Click", exact: true }).tap();
    await device.has("<1click>");
    const touch = await fingersOn(phone.page);
    const at = async (name: string): Promise<[number, number]> => {
      const box = (await phone.page.getByRole("button", { name, exact: true }).boundingBox())!;
      return [box.x + box.width / 2, box.y + box.height / 2];
    };
    const [hold, press] = [await at("Hold"), await at("Press")];
    await touch("touchStart", hold);
    await touch("touchStart", hold, press);
    await device.has("<10press>");
    expect(device.bytes).not.toContain("<2release>");
    await touch("touchEnd");
    await device.has("<2release>");

    const pages = phone.page.getByRole("navigation").getByRole("link");
    expect(await pages.allInnerTexts()).toEqual(["Hall", "Lobby"]);
    await touch("touchStart", press);
    await touch("touchMove", [press[0] - 200, press[1]]);
    expect(await phone.page.title()).toBe("Hall");
    await touch("touchEnd");
    const [x, y] = await at("Click");
    await touch("touchStart", [x + 200, y - 100]);
    await touch("touchMove", [x + 50, y - 100]);
    await touch("touchEnd");
    await expect.poll(() => phone.page.title(), { timeout: longest }).toBe("Lobby");
    expect(device.bytes).not.toContain("<1click><1click>");
    await phone.context.close();
    expect(phone.errors).toEqual([]);
  });
});
