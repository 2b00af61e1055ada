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
  const stored = await fetch(`${host.url}/api/equipment/config`, {
    method: "POST",
    body: JSON.stringify({ data: config }),
  });
  expect(await stored.json()).toMatchObject({ code: 20000 });
  await page.reload();
  await connected(page);

  await page.getByRole("button", { name: "Lamp", exact: true }).click();
  await page.getByRole("combobox", { name: "Value" }).fill("Power");
  await page.getByRole("button", { name: "Add a state" }).click();
  await page.getByRole("textbox", { name: "Shows the text" }).fill("Projector is on");
  expect(await axeFindings(page)).toEqual([]);
  await page.screenshot({ path: "/tmp/edit.png" });
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
  await panel.screenshot({ path: "/tmp/stale.png" });
  expect(await panel.getByRole("img", { name: "Not up to date" }).count()).toBe(3);
  expect(await axeFindings(panel)).toEqual([]);
  expect(errors).toEqual([]);
});
