import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { readPage } from "../../src/model/readLayout.ts";
import { arrangedForPhone } from "../../src/model/phoneArrange.ts";
import { connected, newPage, save, screens, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";
import { longest } from "../support/wait.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

const components = Array.from({ length: 12 }, (_, index) => ({
  id: index + 1,
  type: "button",
  mode: index ? "click" : "pressRelease",
  x: 40 + 300 * (index % 4),
  y: 60 + 200 * Math.floor(index / 4),
  look: { text: `B${index + 1}` },
}));
const popUp = { id: "p2", place: "popup", width: 1000, height: 300, components: [{ ...components[1], id: 20 }] };
const link = { id: 13, type: "link", x: 40, y: 700, target: "p2", look: { text: "More" } };

async function start(pages: object[]) {
  const host = await Host.start();
  const device = await TcpDevice.start();
  await host.addTcp("Device", device.port);
  await host.post("setCentralControlWebLayout", { data: { form: "control pages", version: 1, pages } });
  const command = { portIndex: 1, controlType: "netPortInfo", commandName: "C" };
  const componentArr = [...components, ...popUp.components].map(({ id }) => ({
    componentId: id,
    interactionArr: ["click", "press", "release"].map((triggerType) => ({
      triggerType,
      commandArr: [{ ...command, netPortInfo: { content: `<${id}${triggerType}>` } }],
    })),
  }));
  await host.post("updateComponentInteraction", { data: { componentInteractionInfo: { componentArr } } });
  return { host, device };
}

const arranged = (page: object) => ({ ...page, phone: arrangedForPhone(readPage(page)) });
const hall = { id: "p1", name: "Hall", width: 1280, height: 800, components: [...components, link] };

it("shows a panel on a phone the layout for phones, except while a finger is on it", async () => {
  const { host, device } = await start([hall, popUp].map(arranged));
  const { page, context, errors } = await newPage(browser, screens.phone);
  await page.goto(`${host.url}/#/panel`);
  await connected(page);
  const button = (name: string) => page.getByRole("button", { name, exact: true });
  const width = () =>
    page
      .locator(".page")
      .first()
      .evaluate((one: HTMLElement) => one.style.width);
  for (const { look } of components) {
    const box = (await button(look.text).boundingBox())!;
    expect([look.text, box.width >= 48, box.height >= 48, box.x + box.width <= 390]).toEqual([
      look.text,
      true,
      true,
      true,
    ]);
  }
  await button("B12").tap();
  await device.has("<12click>");
  await button("More").or(page.getByText("More")).first().tap();
  const above = page.getByRole("dialog").getByRole("button", { name: "B2", exact: true });
  expect((await above.boundingBox())!.width).toBeGreaterThanOrEqual(48);
  await above.tap();
  await device.has("<20click>");
  await page.keyboard.press("Escape");

  const box = (await button("B1").boundingBox())!;
  await page.mouse.move(box.x + 10, box.y + 10);
  await page.mouse.down();
  await device.has("<1press>");
  await page.setViewportSize({ width: 844, height: 390 });
  await page.waitForFunction(() => innerWidth === 844);
  expect(await width()).toBe("390px");
  await page.mouse.up();
  await device.has("<1release>");
  await expect.poll(width, { timeout: longest }).toBe("1280px");
  expect([device.bytes, errors]).toEqual(["<12click><20click><1press><1release>", []]);
  await context.close();
  await device[Symbol.asyncDispose]();
  await host[Symbol.asyncDispose]();
});

it("lays out a page for phones beside its own layout, and undoes it", async () => {
  const { host, device } = await start([hall]);
  const { page, context, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/edit/p1`);
  await connected(page);
  const tool = (name: string) => page.getByRole("button", { name, exact: true }).first();
  const x = page.getByLabel("X", { exact: true });
  await tool("Add a layout for phones").click();
  await page.getByRole("tab", { name: "List" }).click();
  await tool("B1").click();
  const proposed = await x.inputValue();
  await page.locator("[data-canvas]").focus();
  await page.keyboard.press("Shift+ArrowRight");
  expect(Number(await x.inputValue())).toBe(Number(proposed) + 10);
  await tool("B2").click();
  await tool("Hide on phones").click();
  await tool("Show on phones: B2").waitFor();
  await save(page);
  const stored = readPage((await host.read("getPageLayoutInfo")).pages[0]);
  expect(stored.components[0]).toMatchObject({ x: 40, y: 60 });
  expect(stored.phone!.places).toMatchObject({ 1: { x: Number(proposed) + 10 }, 2: { isHidden: true } });
  await page.keyboard.press("Control+Z");
  await tool("B2").click();
  await page.keyboard.press("Control+Z");
  await tool("B1").click();
  expect(await x.inputValue()).toBe(proposed);
  await tool("Layout for large screens").click();
  await tool("B1").click();
  expect([await x.inputValue(), errors]).toEqual(["40", []]);
  await context.close();
  await device[Symbol.asyncDispose]();
  await host[Symbol.asyncDispose]();
});
