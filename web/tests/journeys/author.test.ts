import { afterAll, beforeAll, describe, expect, it } from "vitest";
import type { Browser, Locator, Page } from "playwright-core";
import { connected, fingersOn, newPage, save, screens, startBrowser } from "../support/browser.ts";
import { SerialDevice, TcpDevice, UdpDevice } from "../support/equipment.ts";
import { Host, type StoredComponent } from "../support/host.ts";
import { longest } from "../support/wait.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser(["--host-resolver-rules=MAP control.lan 127.0.0.1"])));
afterAll(() => browser.close());

async function addInterface(page: Page, kind: string, name: string, fields: Record<string, string>): Promise<void> {
  await page.getByRole("button", { name: "New interface" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByText(kind, { exact: true }).click();
  await dialog.getByLabel("Name").fill(name);
  for (const [label, value] of Object.entries(fields)) await dialog.getByLabel(label, { exact: true }).fill(value);
  await dialog.getByRole("button", { name: "Try and store" }).click();
}

async function addCommand(page: Page, through: string, name: string, content: string, hex = false): Promise<void> {
  await page.getByRole("button", { name: "New command" }).click();
  const dialog = page.getByRole("dialog");
  const option = dialog.locator("option", { hasText: through });
  await dialog.getByLabel("Through the interface").selectOption(await option.getAttribute("value"));
  await dialog.getByLabel("Name of the command").fill(name);
  await dialog.getByRole("radio", { name: hex ? "Hexadecimal" : "Text" }).click();
  await dialog.locator("#content").fill(content);
  await dialog.getByRole("button", { name: "OK" }).click();
}

/** An author who does one thing after the other, each of them counted. */
class Counted {
  actions = 0;

  constructor(readonly page: Page) {}

  async click(at: Locator): Promise<void> {
    ++this.actions;
    await at.click();
  }

  async key(name: string): Promise<void> {
    ++this.actions;
    await this.page.keyboard.press(name);
  }

  /** Types where the focus is. */
  async type(text: string): Promise<void> {
    ++this.actions;
    await this.page.keyboard.type(text);
  }

  async choose(at: Locator, text: string): Promise<void> {
    ++this.actions;
    await at.focus();
    await at.selectOption({ label: text });
  }
}

it("leads from an empty server to a click that reaches the device in at most 12 actions", async () => {
  await using host = await Host.start();
  await using projector = await TcpDevice.start();
  const { page, context, errors } = await newPage(browser);
  await page.goto(host.url);
  await connected(page);
  const author = new Counted(page);
  const focused = (label: string) => page.getByLabel(label, { exact: true }).and(page.locator(":focus")).waitFor();

  await author.click(page.getByRole("listitem").filter({ hasText: "Add an interface" }).getByText("Go"));
  await focused("Address of the device");
  await author.type(`127.0.0.1:${projector.port}`);
  await author.key("Enter");
  await focused("Name of the page");
  await author.key("Enter");
  await author.click(page.getByRole("button", { name: "Button", exact: true }));
  await author.click(page.getByRole("button", { name: "New command" }));
  await focused("Content");
  await author.type("PWR ON");
  await author.choose(page.getByLabel("Ends with"), "CR (0D)");
  await author.click(page.getByRole("button", { name: "OK" }));
  await page.getByText("50 57 52 20 4F 4E 0D").waitFor();
  await page.getByText("PWR ON", { exact: true }).waitFor();
  await author.key("Control+S");
  const panelOpened = context.waitForEvent("page");
  await page.getByText("Saved. Panels show it").waitFor();
  await author.click(page.getByRole("link", { name: "Open panel" }));
  const panel = await panelOpened;
  await panel.getByText("Connected").waitFor();
  await author.click(panel.getByRole("button", { name: "Button" }));
  await projector.has("PWR ON\r");
  expect(author.actions).toBeLessThanOrEqual(12);

  // The next command ends as the last one did.
  await page.getByRole("button", { name: "New command" }).click();
  await focused("Content");
  expect(await page.getByLabel("Ends with").inputValue()).toBe("\r");
  expect(errors).toEqual([]);
});

describe("an author on an empty server, by host name and over plain HTTP", () => {
  it("comes from nothing to clicks that reach TCP, UDP and serial equipment", async () => {
    await using line = await SerialDevice.start();
    await using host = await Host.start({ COM7: line.path });
    await using projector = await TcpDevice.start();
    await using lamps = await UdpDevice.start();
    const { page, context, errors } = await newPage(browser);
    await page.goto(`http://control.lan:${host.port}/`);
    expect(await page.evaluate(() => [isSecureContext, typeof crypto.randomUUID])).toEqual([false, "undefined"]);
    await connected(page);

    await page.getByRole("link", { name: "Interfaces", exact: true }).click();
    const at = (port: number) => ({ "Address of the device": "127.0.0.1", Port: String(port) });
    for (const [kind, name, fields] of [
      ["TCP client", "Projector", at(projector.port)],
      ["UDP", "Lamps", at(lamps.port)],
      ["Serial port", "Relay", { "Serial port": "COM7" }],
    ] as const) {
      await addInterface(page, kind, name, fields);
      await page.getByText(`${name} works and is stored.`).waitFor();
    }
    await addInterface(page, "TCP client", "Projector", at(1));
    await page.getByRole("alert").filter({ hasText: "The name is taken." }).waitFor();
    await page.getByRole("dialog").getByLabel("Name").fill("Matrix");
    await page.getByRole("button", { name: "Try and store" }).click();
    await page.getByRole("alert").filter({ hasText: "Nothing answers at 127.0.0.1:1." }).waitFor();
    await page.getByRole("button", { name: "Cancel" }).click();

    await page.getByRole("link", { name: "Pages", exact: true }).click();
    await page.getByRole("button", { name: "New page" }).click();
    await page.keyboard.type("Hall");
    expect(await page.getByLabel("Name of the page").inputValue()).toBe("Hall");
    await page.getByRole("button", { name: "OK" }).click();

    // The text goes out with real characters in place of escapes; hexadecimal and the other two lines follow.
    await page.getByRole("button", { name: "Button", exact: true }).click();
    await page.getByRole("tab", { name: "Look" }).click();
    await page.getByLabel("Text", { exact: true }).fill("On");
    await page.getByRole("tab", { name: "Commands" }).click();
    await addCommand(page, "Projector", "Power on", "PWR ON\\r\\x02");
    await addCommand(page, "Lamps", "Scene", "53 00 FF", true);
    await addCommand(page, "Relay", "Close", "$AA $11");
    await expect.poll(() => page.getByText("50 57 52 20 4F 4E 0D 02").count(), { timeout: longest }).toBe(1);
    await page.getByRole("button", { name: "Send now" }).click();
    await page.getByText("Sent, and taken by the device's connection.").waitFor();
    await Promise.all([projector.has("PWR ON\r\x02"), lamps.has("S\0\xff"), line.has("$AA $11")]);

    await page.keyboard.press("Control+S");
    await page.getByText("Saved. Panels show it").waitFor();
    const [panel] = await Promise.all([
      context.waitForEvent("page"),
      page.getByRole("link", { name: "Open panel" }).click(),
    ]);
    projector.bytes = "";
    await panel.getByText("Connected").waitFor();
    await panel.getByRole("button", { name: "On" }).click();
    await projector.has("PWR ON\r\x02");
    await panel.locator(".part.done").waitFor();
    expect(errors).toEqual([]);
  });
});

/** The editor on a page that holds these components, stored on the host. */
async function openEditor(host: Host, components: object[]): Promise<{ page: Page; errors: string[] }> {
  const pages = [
    { id: "p1", name: "Hall", width: 1280, height: 800, components },
    { id: "p2", name: "Lobby", components: [] },
  ];
  await host.post("setCentralControlWebLayout", {
    data: { form: "control pages", version: 1, startPage: "p1", pages },
  });
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/edit/p1`);
  await page.locator("[data-canvas]").waitFor();
  await connected(page);
  return { page, errors };
}

const button = (id: number, x: number, y: number) => ({
  ...{ id, type: "button", x, y, width: 100, height: 60, look: { text: `B${id}` } },
});
const stored = async (host: Host): Promise<StoredComponent[]> =>
  (await host.read("getPageLayoutInfo")).pages[0]!.components;

/** Where a point of the page lies on the screen. */
async function onScreen(page: Page, x: number, y: number): Promise<[number, number]> {
  return page.locator(".sheet").evaluate(
    (sheet, at) => {
      const box = sheet.getBoundingClientRect();
      const scale = box.width / (sheet as HTMLElement).offsetWidth;
      return [box.x + at.x * scale, box.y + at.y * scale];
    },
    { x, y },
  );
}

async function drag(page: Page, from: [number, number] | Locator, to: [number, number]): Promise<void> {
  if (Array.isArray(from)) await page.mouse.move(...(await onScreen(page, ...from)));
  else await from.hover();
  await page.mouse.down();
  const [x, y] = await onScreen(page, ...to);
  await page.mouse.move(x - 30, y - 3, { steps: 3 });
  await page.mouse.move(x, y);
  await page.mouse.up();
}

describe("the editor", () => {
  it("drags with snapping, resizes, selects by marquee, groups, undoes, and pastes on another page", async () => {
    await using host = await Host.start();
    const { page, errors } = await openEditor(host, [button(1, 100, 100), button(2, 400, 300)]);

    // Both panels beside it leave room for three quarters of the page's size, also after the window was smaller.
    await page.setViewportSize({ width: 1440, height: 900 });
    const zoom = async () => parseInt(await page.locator(".zoom").innerText(), 10);
    await expect.poll(zoom, { timeout: longest }).toBeGreaterThanOrEqual(75);

    // The left edge comes to 398, within reach of the one of B2 at 400.
    await drag(page, [150, 130], [448, 130]);
    await save(page);
    expect(await stored(host)).toMatchObject([{ x: 400, y: 100 }, {}]);
    await page.keyboard.press("Control+Z");
    await save(page);
    expect(await stored(host)).toMatchObject([{ x: 100, y: 100 }, {}]);

    await page.keyboard.press("Escape");
    await drag(page, [50, 50], [600, 500]);
    await page.keyboard.press("Control+G");
    await page.keyboard.press("Shift+ArrowRight");
    await page.keyboard.press("ArrowDown");
    await save(page);
    const moved = await stored(host);
    const text = page.getByLabel("Text", { exact: true });
    expect([await text.inputValue(), await text.getAttribute("placeholder")]).toEqual(["", "mixed"]);
    await text.press("!");
    await save(page);
    expect(await stored(host)).toMatchObject([{ look: { text: "!" } }, { look: { text: "!" } }]);
    const group = expect.stringMatching(/./) as string;
    expect(moved).toMatchObject([
      { x: 110, y: 101, group },
      { x: 410, y: 301, group: moved[0]!.group },
    ]);

    await drag(page, page.locator("[data-handle=se]"), [620, 361]);
    await save(page);
    expect((await stored(host))[0]!.width).toBeGreaterThan(100);

    await page.keyboard.press("Control+C");
    await page.getByLabel("Page", { exact: true }).selectOption("Lobby");
    await page.locator("[data-canvas]").focus();
    await page.keyboard.press("Control+V");
    await page.locator(".sheet .part").nth(1).waitFor();
    await save(page);
    const [from, to] = (await host.read("getPageLayoutInfo")).pages;
    expect(to?.components).toHaveLength(2);
    expect(to?.components[0]?.id).not.toBe(from?.components[0]?.id);

    await page.mouse.click(...(await onScreen(page, to!.components[0]!.x + 20, to!.components[0]!.y + 20)), {
      button: "right",
    });
    await page.getByRole("menuitem", { name: "Align: Left" }).waitFor();
    await page.keyboard.press("Escape");
    await page.keyboard.press("Control+Shift+G");
    await page.keyboard.press("Escape");
    await page.mouse.dblclick(...(await onScreen(page, to!.components[0]!.x + 20, to!.components[0]!.y + 20)));
    await page.keyboard.type("Lamp");
    await page.keyboard.press("Enter");
    await page.keyboard.press("Shift+F10");
    await page.getByRole("menuitem", { name: "Duplicate" }).click();
    await expect.poll(() => page.locator(".sheet .part", { hasText: "Lamp" }).count(), { timeout: longest }).toBe(2);
    await save(page);

    // Drawn in the wanted size; what is typed next is its text, and a key after that acts on it.
    await page.getByRole("button", { name: "Switch", exact: true }).click({ modifiers: ["Shift"] });
    await drag(page, [700, 500], [900, 620]);
    await page.keyboard.type("Lamp 2");
    await page.keyboard.press("Enter");
    await page.keyboard.press("ArrowRight");
    await save(page);
    const drawn = (await host.read("getPageLayoutInfo")).pages[1]!.components.at(-1);
    expect(drawn).toMatchObject({ type: "switch", x: 701, y: 500, width: 200, height: 120, look: { text: "Lamp 2" } });

    await page.getByRole("tab", { name: "Look" }).click();
    await text.fill("Lamp ".repeat(60));
    await page.getByRole("tab", { name: "Problems" }).click();
    await page.getByRole("button", { name: "Its text has no room and is cut off." }).waitFor();
    await page.locator("[data-canvas]").focus();
    await page.keyboard.press("?");
    await page.getByRole("dialog", { name: "Keyboard" }).waitFor();
    expect(errors).toEqual([]);
  });

  it.each([
    ["Mine", ["Hall", "Lobby"], [200, 300]],
    ["Theirs", ["Hall", "Lobby", "Hall (mine)"], [150, 300, 200]],
  ])(
    "merges with what somebody else saves in the same moment, and asks for what both have changed: %s",
    async (choice, names, heights) => {
      await using host = await Host.start();
      await using device = await TcpDevice.start();
      await host.addTcp("Device", device.port);
      const { page } = await openEditor(host, [button(1, 100, 100)]);
      const theirs = await host.read("getPageLayoutInfo");
      theirs.pages[1]!.components.push({ ...theirs.pages[0]!.components[0]!, id: 7, y: 300 });
      const save = async (y: number) => {
        theirs.pages[0]!.components[0]!.y = y;
        await host.post("setCentralControlWebLayout", { data: theirs });
      };
      await save(100);
      await drag(page, [150, 130], [250, 230]);
      await page.getByText("Somebody else has saved: Lobby.").waitFor();
      const commands = await host.read("getComponentInteractionInfo");
      await addCommand(page, "Device", "On", "ON");
      await page.route(
        "**/setCentralControlWebLayout",
        async (route) => {
          await save(150);
          await route.continue();
        },
        { times: 1 },
      );
      await page.keyboard.press("Control+S");
      const dialog = page.getByRole("dialog", { name: "You and somebody else have changed the same" });
      await dialog.getByRole("radio", { name: choice }).check();
      // The write that was refused takes back what was written before it.
      expect(await host.read("getComponentInteractionInfo")).toEqual(commands);
      expect((await host.read("getPageLayoutInfo")).pages[0]?.components[0]?.y).toBe(150);
      if (choice === "Theirs") await dialog.getByLabel("Keep my version of pages as copies").check();
      await dialog.getByRole("button", { name: "Merge and save" }).click();
      await page.getByRole("button", { name: "Saved" }).waitFor();
      const { pages } = await host.read("getPageLayoutInfo");
      expect(pages.map((one) => one.name)).toEqual(names);
      expect(pages.map((one) => one.components[0]?.y)).toEqual(heights);
    },
  );

  it("gives a slider one list for all positions, and lists its command when the interface is deleted", async () => {
    await using host = await Host.start();
    await using device = await TcpDevice.start();
    await host.addTcp("Device", device.port);
    const { page, errors } = await openEditor(host, [button(2, 100, 100)]);
    await drag(page, page.getByRole("button", { name: "Slider" }), [600, 400]);
    await addCommand(page, "Device", "Volume", "VOL {value:3}");
    await page.getByText("56 4F 4C 20 30 35 30").waitFor();
    // What is stored for the slider alone does not hide what somebody else has stored for another component.
    const commandArr = [{ portIndex: 1, controlType: "netPortInfo", netPortInfo: { content: "X" } }];
    const componentArr = [{ componentId: 2, interactionArr: [{ triggerType: "click", commandArr }] }];
    await host.post("updateComponentInteraction", { data: { componentInteractionInfo: { componentArr } } });
    await page.getByRole("button", { name: "Send now" }).click();
    await device.has("VOL 050");
    await page.keyboard.press("Control+S");
    await page.getByRole("button", { name: "Saved" }).waitFor();
    expect(await stored(host)).toMatchObject([{ id: 2 }, { x: 440, y: 360 }]);
    const [others, commands] = (await host.read("getComponentInteractionInfo")).componentInteractionInfo.componentArr;
    expect(others?.interactionArr).toMatchObject([{ commandArr: [{ netPortInfo: { content: "X" } }] }]);
    expect(commands?.interactionArr).toHaveLength(11);
    expect(commands?.interactionArr[10]).toMatchObject({
      triggerType: "position10",
      commandArr: [{ netPortInfo: { content: "VOL 100" } }],
    });

    await page.goto(`${host.url}/#/interfaces`);
    await page.getByText("2 commands on 1 page").waitFor();
    await page.getByRole("button", { name: "Delete: Device" }).click();
    await page.getByRole("dialog").getByText("2 commands use it. They stop working at once.").waitFor();
    await page.getByRole("dialog").getByRole("button", { name: "Delete" }).click();
    await page.getByText("No interface yet").waitFor();
    // It comes back with its commands; a new one of its name is offered them.
    await page.getByRole("button", { name: "Undo", exact: true }).last().click();
    await page.getByText("2 commands go through Device now.").waitFor();
    await page.getByRole("button", { name: "Delete: Device" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Delete" }).click();
    await page.getByText("No interface yet").waitFor();
    await addInterface(page, "UDP", "Device", { "Address of the device": "127.0.0.1", Port: "9" });
    await page.getByRole("button", { name: "Let them" }).waitFor();
    await page.getByRole("button", { name: "Delete: Device" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Delete" }).click();
    await page.getByText("No interface yet").waitFor();
    await page.goto(`${host.url}/#/edit/p1`);
    await page.getByRole("tab", { name: "Problems" }).click();
    await page.getByRole("button", { name: "A command names a deleted interface." }).last().click();
    await page.getByRole("heading", { name: "Slider" }).waitFor();
    await page.getByRole("tab", { name: "Commands", selected: true }).waitFor();
    expect(errors).toEqual([]);
  });

  it("follows fingers", async () => {
    await using host = await Host.start();
    await openEditor(host, [button(1, 100, 100)]).then(({ page }) => page.context().close());
    const { page, context } = await newPage(browser, screens.phone);
    await page.goto(`${host.url}/#/edit/p1`);
    await page.locator(".sheet .part").waitFor();
    await connected(page);
    const touch = await fingersOn(page);
    const fingers = async (type: Parameters<typeof touch>[0], ...points: [number, number][]) =>
      touch(type, ...(await Promise.all(points.map(([x, y]) => onScreen(page, x, y)))));
    await fingers("touchStart", [150, 130]);
    await fingers("touchMove", [300, 130]);
    await fingers("touchMove", [550, 430]);
    await fingers("touchEnd");
    await page.getByRole("button", { name: "Save", exact: true }).click();
    await page.getByRole("button", { name: "Saved" }).waitFor();
    expect((await stored(host))[0]).toMatchObject({ x: 500, y: 400 });

    const zoom = async () => parseInt(await page.locator(".zoom").innerText(), 10);
    const before = await zoom();
    await fingers("touchStart", [300, 300], [500, 300]);
    await fingers("touchMove", [200, 300], [600, 300]);
    await fingers("touchEnd");
    await expect.poll(zoom, { timeout: longest }).toBeGreaterThan(before);
    await context.close();
  });
});
