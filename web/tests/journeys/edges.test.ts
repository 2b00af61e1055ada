import { expect, it } from "vitest";
import { connected, fingersOn, newPage, screens, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";
import { longest } from "../support/wait.ts";

const button = (id: number, text: string, x: number, more: object = {}) => ({
  ...{ id, type: "button", x, y: 8, width: 120, height: 64, look: { text } },
  ...more,
});
const link = (id: number, text: string, x: number, target: string) => ({
  ...button(id, text, x),
  ...{ type: "link", target },
});
const pages = [
  { id: "h", name: "Top", place: "header", width: 1280, height: 80 },
  { id: "p1", name: "Hall", width: 1280, height: 640 },
  { id: "p2", name: "Lobby", width: 1280, height: 640 },
  { id: "p3", name: "Welcome", width: 1280, height: 640, place: "hidden", isBare: true },
  { id: "f", name: "Bottom", place: "footer", width: 640, height: 40 },
  { id: "q", name: "Switch off?", place: "popup", width: 400, height: 100 },
];
const components: Record<string, object[]> = {
  h: [
    link(1, "To Lobby", 10, "p2"),
    button(2, "Louder", 200, { mode: "pressRelease" }),
    button(3, "Off", 400, { confirmPage: "q" }),
  ],
  p1: [button(4, "Lamp", 200, { mode: "press" }), button(5, "Lost", 400, { confirmPage: "gone" })],
  f: [button(6, "Help", 10, { height: 30 })],
  q: [link(7, "Yes", 20, "confirm"), link(8, "No", 200, "back")],
};

it("header and footer stay around changing pages, and a page asks before something is sent", async () => {
  await using host = await Host.start();
  await using device = await TcpDevice.start();
  await using browser = { it: await startBrowser(), [Symbol.asyncDispose]: () => browser.it.close() };
  await host.addTcp("Device", device.port);
  const data = {
    form: "control pages",
    version: 1,
    pages: pages.map((one) => ({ ...one, components: components[one.id] })),
  };
  await host.post("setCentralControlWebLayout", { data });
  const command = { portIndex: 1, controlType: "netPortInfo", commandName: "C" };
  const componentArr = [2, 3, 4, 5, 6].map((componentId) => ({
    componentId,
    interactionArr: ["click", "press", "release"].map((triggerType) => ({
      triggerType,
      commandArr: [{ ...command, netPortInfo: { content: `<${componentId}${triggerType}>` } }],
    })),
  }));
  await host.post("updateComponentInteraction", { data: { componentInteractionInfo: { componentArr } } });

  const { page, errors } = await newPage(browser.it, { ...screens.tablet, hasTouch: true });
  await page.goto(`${host.url}/#/panel`);
  await connected(page);
  const part = (name: string) => page.getByRole("button", { name, exact: true });
  const sheets = () =>
    page.locator(".page").evaluateAll((all) => all.map((one) => one.getBoundingClientRect().toJSON() as DOMRect));
  await expect.poll(sheets, { timeout: longest }).toHaveLength(3);
  const [top, middle, bottom] = await sheets();
  expect(top!.width / top!.height).toBeCloseTo(1280 / 80, 1);
  const gaps = [top!.y, middle!.y - top!.bottom, bottom!.y - middle!.bottom];
  for (const gap of gaps) expect(gap).toBeCloseTo(0, 0);
  for (const one of [middle!, bottom!]) expect(one.width).toBeCloseTo(top!.width, 0);

  const touch = await fingersOn(page);
  const at = async (name: string): Promise<[number, number]> => {
    const box = (await part(name).boundingBox())!;
    return [box.x + box.width / 2, box.y + box.height / 2];
  };
  const [louder, lamp] = [await at("Louder"), await at("Lamp")];
  await touch("touchStart", louder);
  await touch("touchStart", louder, lamp);
  await device.has("<2press><4press>");
  await touch("touchEnd");
  await device.has("<2release>");

  await part("Off").evaluate((one) => one.setAttribute("data-same", ""));
  await part("To Lobby").click();
  await expect.poll(() => page.title(), { timeout: longest }).toBe("Lobby");
  expect(await page.locator("[data-same]").count()).toBe(1);
  await part("Help").click();
  await device.has("<6click>");

  const question = page.getByRole("dialog");
  const before = device.bytes;
  const refusals: (() => Promise<unknown>)[] = [
    () => part("No").click(),
    () => page.keyboard.press("Escape"),
    () => page.mouse.click(20, 20),
    () => question.getByRole("button", { name: "Close" }).click(),
    () => page.evaluate(() => dispatchEvent(new Event("offline"))),
  ];
  for (const refuse of refusals) {
    await connected(page);
    await part("Off").click();
    await page.getByRole("dialog", { name: "Switch off?" }).waitFor();
    await refuse();
    await question.waitFor({ state: "detached" });
  }
  await connected(page);
  await part("Off").click();
  await part("Yes").click();
  await device.has("<3click>");
  expect(device.bytes).toBe(`${before}<3click>`);

  await page.goto(`${host.url}/#/panel/p1`);
  await part("Lost").click();
  await question.getByText("Really send it?").waitFor();
  await question.getByRole("button", { name: "Send" }).click();
  await device.has("<5click>");
  await page.goto(`${host.url}/#/panel/p3`);
  await expect.poll(sheets, { timeout: longest }).toHaveLength(1);
  expect(errors).toEqual([]);
});
