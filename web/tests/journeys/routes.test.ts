/** What the application asks for, at the built host. */
import { mkdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { afterAll, afterEach, beforeAll, expect, it, vi } from "vitest";
import type { Browser } from "playwright-core";
import { createEquipment, type Equipment } from "../../src/api/equipment.ts";
import { createServer, type Server } from "../../src/api/server.ts";
import { newPage, startBrowser } from "../support/browser.ts";
import { SerialDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());
afterEach(() => vi.unstubAllGlobals());

/** Each call of the application, in every form that has a route of its own. */
const calls: { [Name in keyof (Server & Equipment)]: Parameters<(Server & Equipment)[Name]>[] } = {
  layout: [[]],
  materials: [[]],
  interactions: [[]],
  interfaces: [[]],
  storeLayout: [[{}]],
  storeMaterials: [[{}]],
  storeInteractions: [[{}]],
  addInterface: [
    ["comInfo", {}],
    ["netPortInfo", {}],
  ],
  editInterface: [
    [1, "comInfo", {}],
    [1, "netPortInfo", {}],
  ],
  deleteInterface: [[1]],
  deleteAllInterfaces: [[]],
  serialPorts: [[]],
  click: [[1, "click"]],
  version: [[]],
  language: [[]],
  setLanguage: [["en", false]],
  setDeveloperMode: [[false]],
  versions: [[]],
  versionDocument: [["2026-11-22_14-05-33", "layout.json"]],
  nameVersion: [["", ""]],
  keepVersion: [[""]],
  restoreVersion: [[""]],
  reportError: [[{}]],
  interfaceStates: [[]],
  storeInterface: [[1, "comInfo", {}]],
  values: [[["Power"], 0]],
  config: [[]],
  storeConfig: [[{}, ""]],
  traffic: [[1, 0]],
  send: [[1, "", 0, 0]],
  askDevice: [[1]],
  writeTrafficFile: [[1, 0]],
};

it("the server has every route that the application names", async () => {
  const asked: [method: string, route: string][] = [];
  vi.stubGlobal("fetch", (route: string, { method }: RequestInit) => {
    asked.push([method!, route]);
    return Promise.resolve(Response.json({ code: 20000 }));
  });
  const server = { ...createServer(), ...createEquipment() } as unknown as Record<
    string,
    (...values: unknown[]) => Promise<unknown>
  >;
  for (const [name, forms] of Object.entries(calls)) for (const values of forms) await server[name]!(...values);
  vi.unstubAllGlobals();

  await using host = await Host.start();
  const version = join(host.userData, "Backup", "2026-11-22_14-05-33");
  mkdirSync(version, { recursive: true });
  writeFileSync(join(version, "layout.json"), "{}");
  const status = async ([method, route]: (typeof asked)[number]) =>
    (await fetch(host.url + route, { method, ...(method === "POST" && { body: "{}" }) })).status;
  expect(await status(["GET", "/api/none"])).toBe(404);
  const missing = [];
  for (const one of asked) if ((await status(one)) === 404) missing.push(one.join(" "));
  expect([missing, asked.length]).toEqual([[], 34]);
});

it("the form of a serial interface lists the server's ports, or says that it can't", async () => {
  await using line = await SerialDevice.start();
  await using host = await Host.start({ COM7: line.path });
  const { page, errors } = await newPage(browser);
  await page.route("**/getServerComList", (route) => route.fulfill({ status: 404 }));
  await page.goto(`${host.url}/#/interfaces`);
  await page.getByRole("button", { name: "New interface" }).click();
  const dialog = page.getByRole("dialog");
  await dialog.getByText("Serial port", { exact: true }).click();
  await dialog.getByRole("alert").filter({ hasText: "The list of the serial ports could not be read." }).waitFor();
  await page.unroute("**/getServerComList");
  await dialog.getByRole("button", { name: "Try again" }).click();
  await dialog.getByText(/^Found on the server: .*COM7/).waitFor();
  await dialog.getByRole("alert").waitFor({ state: "detached" });
  expect(await dialog.locator("datalist#ports option[value=COM7]").count()).toBe(1);
  expect(errors).toEqual([]);
});
