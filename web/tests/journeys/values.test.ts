/** What a device says, from its line to the panel, at the built host. */
import { expect, it } from "vitest";
import { axeFindings } from "../support/axe.ts";
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";

it("a lamp shows what its device says, and that it says nothing any more", async () => {
  await using host = await Host.start();
  await using browser = { it: await startBrowser(), [Symbol.asyncDispose]: () => browser.it.close() };
  await using device = await TcpDevice.start();
  const says = { power: "0", level: "20" };
  device.answer = (bytes) => (bytes.includes("?") ? `POWR=${says.power}\rVOL=${says.level}\r` : "");
  await host.addTcp("Projector", device.port);
  const { nodeId } = (await host.read("getConfigList")).configList[0]!;
  const power = { place: "p", name: "Power", type: "text", table: [{ from: "1", to: "on" }] };
  const patterns = [
    { form: "text", pattern: "POWR={p}", values: [power] },
    { form: "text", pattern: "VOL={v}", values: [{ place: "v", name: "Level", type: "number" }] },
  ];
  const polls = [{ content: "?\r", everyMs: 200 }];
  const config = { version: 1, devices: [{ nodeId, framing: { kind: "terminator", hex: "0D" }, polls, patterns }] };

  const { page, errors, context } = await newPage(browser.it);
  const box = { y: 100, width: 200, height: 90 };
  const components = [
    { id: 1, type: "slider", x: 300, ...box, look: { text: "Level" }, binding: { value: "Level", follows: true } },
    { id: 2, type: "text", x: 600, ...box, look: { text: "{value Level} dB" } },
    { id: 3, type: "button", x: 900, ...box, look: { text: "Start" }, binding: { warns: true } },
  ];
  const pages = [{ id: "p1", name: "Hall", width: 1280, height: 800, components }];
  await page.goto(`${host.url}/#/edit/p1`);
  await connected(page);
  await host.post("setCentralControlWebLayout", { data: { form: "control pages", version: 1, pages } });
  const commandArr = [{ portIndex: nodeId, controlType: "netPortInfo", netPortInfo: { content: "GO" } }];
  const componentArr = [{ componentId: 3, interactionArr: [{ triggerType: "click", commandArr }] }];
  await host.post("updateComponentInteraction", { data: { componentInteractionInfo: { componentArr } } });
  expect(await host.post("/api/equipment/config", { data: config })).toBe(20000);
  await page.reload();
  await connected(page);

  await page.getByRole("button", { name: "Lamp", exact: true }).click();
  await page.getByRole("combobox", { name: "Value" }).fill("Power");
  await page.getByRole("button", { name: "Add a state" }).click();
  await page.getByRole("textbox", { name: "Shows the text" }).fill("Projector is on");
  expect(await axeFindings(page)).toEqual([]);
  await save(page);

  const panel = await context.newPage();
  await panel.goto(`${host.url}/#/panel`);
  await panel.getByText("20 dB").waitFor();
  await panel.getByText("Lamp").waitFor();
  const slider = panel.getByRole("slider", { name: "Level" });
  expect(await slider.getAttribute("aria-valuenow")).toBe("20");
  Object.assign(says, { power: "1", level: "70" });
  await panel.getByText("Projector is on").waitFor();
  await panel.getByText("70 dB").waitFor();
  expect(await slider.getAttribute("aria-valuenow")).toBe("70");
  expect(await axeFindings(panel)).toEqual([]);
  await device.stop();
  await panel.getByText("Device not connected").waitFor();
  expect(await panel.getByRole("img", { name: "Not up to date" }).count()).toBe(3);
  expect(await axeFindings(panel)).toEqual([]);
  expect(errors).toEqual([]);
});

it("a value is made from a message of the device, by marking it", async () => {
  await using host = await Host.start();
  await using browser = { it: await startBrowser(), [Symbol.asyncDispose]: () => browser.it.close() };
  await using device = await TcpDevice.start();
  device.answer = (bytes) => (bytes.endsWith("?PWR\r") ? "POWR=1\r" : "");
  await host.addTcp("Projector", device.port);
  const { page, errors } = await newPage(browser.it);
  await page.goto(`${host.url}/#/interfaces`);
  await connected(page);
  await page.getByRole("button", { name: "Values: Projector" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByText("Nothing was received yet.").waitFor();
  await dialog.getByRole("button", { name: "Add a question" }).click();
  const question = dialog.getByLabel("Question 1", { exact: true });
  await question.fill("\\q");
  await question.press("Tab");
  await dialog.getByRole("alert").filter({ hasText: "Column 1:" }).waitFor();
  await question.fill("?PWR\\r");
  await question.press("Tab");
  await dialog.getByLabel("Every (ms)").fill("200");
  await dialog.getByRole("button", { name: "Save" }).click();
  await page.getByText("The values of Projector are stored.").waitFor();

  const message = dialog.getByRole("button", { name: "POWR=1" }).first();
  await message.getByText("no pattern fits").waitFor();
  await message.click();
  const chosen = dialog.getByLabel("The chosen message");
  await chosen.press("End");
  await chosen.press("Shift+ArrowLeft");
  await dialog.getByRole("button", { name: "The marked piece is a value" }).click();
  expect(await dialog.getByRole("textbox", { name: "Pattern 1" }).inputValue()).toBe("POWR={v1}");
  await dialog.getByLabel("Name for what stands in {v1}").fill("Power");
  await dialog.getByText("Power = 1").first().waitFor();
  await dialog.getByLabel("Renamed in Power").fill("1=on, 0=off");
  await dialog.getByLabel("Renamed in Power").press("Tab");
  await dialog.getByText("Power = on").first().waitFor();
  expect(await axeFindings(page)).toEqual([]);
  await dialog.getByRole("button", { name: "Save" }).click();
  await expect
    .poll(async () => (await (await fetch(`${host.url}/api/equipment/values`)).json()) as unknown, { timeout: 10_000 })
    .toMatchObject({ data: { values: [{ name: "Power", value: "on", stale: false }] } });
  expect(errors).toEqual([]);
});
