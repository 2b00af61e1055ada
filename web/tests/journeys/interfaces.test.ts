/** What the screen of the interfaces says about the equipment, at the built host. */
import { afterAll, beforeAll, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { newPage, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { freePort, Host } from "../support/host.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

it("an interface is stored before its device is there, and says when it comes and goes", async () => {
  await using host = await Host.start();
  const port = await freePort();
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/interfaces`);
  await page.getByRole("button", { name: "New interface" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByLabel("Name").fill("Projector");
  await dialog.getByLabel("Address of the device").fill("127.0.0.1");
  await dialog.getByLabel("Port", { exact: true }).fill(String(port));
  await dialog.getByRole("button", { name: "Try and store" }).click();
  await dialog
    .getByRole("alert")
    .filter({ hasText: `Nothing answers at 127.0.0.1:${port}.` })
    .waitFor();
  await dialog.getByRole("button", { name: "Store anyway" }).click();
  const line = page.getByRole("listitem").filter({ hasText: "Projector" });
  await line.getByText("Not connected", { exact: true }).waitFor();
  await line.getByText("Nothing listens there.").waitFor();

  await using device = await TcpDevice.start(port);
  const { nodeId } = (await host.read("getConfigList")).configList[0]!;
  const commandArr = [{ portIndex: nodeId, controlType: "netPortInfo", netPortInfo: { content: "ON" } }];
  const componentArr = [{ componentId: 1, interactionArr: [{ triggerType: "click", commandArr }] }];
  await host.post("updateComponentInteraction", { data: { componentInteractionInfo: { componentArr } } });
  await host.post("useComponent", { data: { componentId: 1, interactionArr: [{ triggerType: "click" }] } });
  await device.has("ON");
  await line.getByText("Connected", { exact: true }).waitFor();
  await line.getByText("1 command sent (2 B)").waitFor();
  await line.getByText(/^Last failure .*Nothing listens there/).waitFor();
  await device.stop();
  await line.getByText("Not connected", { exact: true }).waitFor();

  await page.getByRole("button", { name: "Edit: Projector" }).click();
  await dialog.getByLabel("Name").fill("Beamer");
  await dialog.getByRole("button", { name: "Try and store" }).click();
  await dialog.getByRole("button", { name: "Store anyway" }).click();
  await page.getByRole("listitem").filter({ hasText: "Beamer" }).getByText("Not connected", { exact: true }).waitFor();
  expect(errors).toEqual([]);
});

it("a line goes to the device as it was typed, and what the device says is shown beside it", async () => {
  await using host = await Host.start();
  await using device = await TcpDevice.start();
  device.answer = (bytes) => (bytes.includes("?PWR") ? "PWR=on\r" : "");
  await host.addTcp("Projector", device.port);
  const { page, errors } = await newPage(browser);
  await page.goto(`${host.url}/#/interfaces`);
  await page.getByRole("button", { name: "Terminal: Projector" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByText("Nothing has gone over this interface yet.").waitFor();
  const line = dialog.getByLabel("Line to send");
  await line.fill("?PWR\\r");
  await line.press("Enter");
  const log = dialog.getByRole("log");
  await log.getByText("3F 50 57 52 0D").waitFor();
  await log.getByText(/^by hand · from /).waitFor();
  await log.getByText("50 57 52 3D 6F 6E 0D").waitFor();
  expect(device.bytes).toBe("?PWR\r");
  await dialog.getByRole("radio", { name: "Received" }).click();
  await log.getByText("3F 50 57 52 0D").waitFor({ state: "detached" });
  await dialog.getByRole("radio", { name: "Both" }).click();
  await line.press("ArrowUp");
  expect(await line.inputValue()).toBe("?PWR\\r");
  await line.fill("\\q");
  await dialog.getByRole("alert").filter({ hasText: "Column 1:" }).waitFor();
  await dialog.getByRole("button", { name: "Write into a file" }).click();
  await dialog.getByText("The server writes this traffic into Traffic.log until").waitFor();
  await device.stop();
  await line.fill("off");
  await line.press("Enter");
  await dialog.getByRole("alert").filter({ hasText: "Nothing listens there." }).waitFor();
  await log.getByText("Not sent: Nothing listens there.").waitFor();
  // The interface is renamed without leaving.
  await dialog.getByRole("button", { name: "Edit interface" }).click();
  const form = page.getByRole("dialog").filter({ has: page.getByRole("heading", { name: "Edit interface" }) });
  await form.getByLabel("Name").fill("Beamer");
  await form.getByRole("button", { name: "Try and store" }).click();
  await form.getByRole("button", { name: "Store anyway" }).click();
  await page.getByRole("heading", { name: "Terminal of Beamer" }).waitFor();
  expect(errors).toEqual([]);
});
