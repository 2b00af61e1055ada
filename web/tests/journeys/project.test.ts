import { randomBytes } from "node:crypto";
import { existsSync, readFileSync, writeFileSync } from "node:fs";
import { crc32, deflateSync } from "node:zlib";
import { afterAll, beforeAll, describe, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { FrontPort, Host } from "../support/host.ts";
import { storeSample } from "../support/places.ts";
import { waitFor } from "../support/wait.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

function wholeNumber(value: number): Buffer {
  const bytes = Buffer.alloc(4);
  bytes.writeUInt32BE(value);
  return bytes;
}

/** A PNG of one colour; noise makes it large. */
function png(width: number, height: number, noise = false): Buffer {
  const chunk = (type: string, data: Buffer) => {
    const content = Buffer.concat([Buffer.from(type), data]);
    return Buffer.concat([wholeNumber(data.length), content, wholeNumber(crc32(content))]);
  };
  const row = () => Buffer.concat([Buffer.alloc(1), noise ? randomBytes(width * 3) : Buffer.alloc(width * 3)]);
  return Buffer.concat([
    Buffer.from([137, 80, 78, 71, 13, 10, 26, 10]),
    chunk("IHDR", Buffer.concat([wholeNumber(width), wholeNumber(height), Buffer.from([8, 2, 0, 0, 0])])),
    chunk("IDAT", deflateSync(Buffer.concat(Array.from({ length: height }, row)), { level: 1 })),
    chunk("IEND", Buffer.alloc(0)),
  ]);
}

const image = (name: string, buffer: Buffer) => ({ name, mimeType: "image/png", buffer });

describe("materials", () => {
  it("are added, warned of and refused by size, scaled down, and replaced in place", async () => {
    await using host = await Host.start();
    await storeSample(host);
    const { page, errors } = await newPage(browser);
    await page.goto(`${host.url}/#/materials`);
    await connected(page);
    const choose = async (name: string, ...files: ReturnType<typeof image>[]) => {
      const chosen = page.waitForEvent("filechooser");
      await page.getByRole("button", { name }).first().click();
      await (await chosen).setFiles(files);
    };
    const [wide800, huge] = [image("wide.png", png(800, 600, true)), image("huge.png", Buffer.alloc(8_000_001))];
    await choose("Add images", image("small.png", png(4, 2)), wide800, huge);
    await page.getByText("huge.png is larger than 8 MB and was not added.").waitFor();
    const wide = page.locator("main li").nth(1);
    await wide.getByText("Large: panels take long to load it.").waitFor();
    await wide.getByRole("button", { name: "Scale down" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "128 px" }).click();
    await wide.getByText("128 × 96").waitFor();

    await page.goto(`${host.url}/#/edit/p-hall`);
    await page.getByRole("complementary").last().getByLabel("Material").selectOption("small");
    await save(page);
    const id = (await host.read("getMaterialList")).materialList[0]?.id;
    expect((await host.read("getPageLayoutInfo")).pages[0]?.material).toBe(id);

    await page.goto(`${host.url}/#/materials`);
    await choose("Replace", image("other.png", png(6, 6)));
    await page.getByText("6 × 6").waitFor();
    await save(page);
    const stored = (await host.read("getMaterialList")).materialList;
    expect(stored).toMatchObject([
      { id, name: "small", width: 6 },
      { name: "wide", width: 128 },
    ]);

    await page.getByRole("button", { name: "Delete: wide" }).click();
    await page.locator("main li").nth(1).waitFor({ state: "detached" });
    await page.keyboard.press("Control+Z");
    await page.locator("main li").nth(1).waitFor();
    expect(errors).toEqual([]);
  });
});

describe("a project as a file", () => {
  it("goes to another server, is looked through, and works there", async () => {
    await using there = await Host.start();
    await using device = await TcpDevice.start();
    const { page, context } = await newPage(browser);
    const at = (index: number, dstPort: number) => {
      const one = sample.interfaces[index]!;
      return { ...one, netPortInfo: { ...one.netPortInfo, dstPort } };
    };
    const path = `${there.home}/project.json`;
    writeFileSync(path, JSON.stringify({ ...sample, interfaces: [at(0, device.port), at(1, 1)] }));
    await page.goto(`${there.url}/#/pages`);
    await connected(page);
    await page.getByRole("button", { name: "Import" }).click();
    const dialog = page.getByRole("dialog");
    await dialog
      .locator("input")
      .setInputFiles({ name: "x.json", mimeType: "application/json", buffer: Buffer.from("{}") });
    await dialog.getByRole("alert").filter({ hasText: "This is no exported project or page." }).waitFor();
    await dialog.locator("input").setInputFiles(path);
    await dialog.getByText("Hall, Sources").waitFor();
    await dialog.getByRole("button", { name: "Add the missing interfaces" }).click();
    await dialog.getByText("1 / 2 found here").waitFor();
    await dialog.getByText("Nothing answers at 127.0.0.1:1. Check address and port").waitFor();
    await dialog.getByRole("button", { name: "Replace everything" }).click();
    const toSave = page.getByText("Imported. Save to store it.");
    await toSave.waitFor();
    await save(page);
    expect(await toSave.count()).toBe(0);

    const [saved] = await Promise.all([
      page.waitForEvent("download"),
      page.getByRole("button", { name: "Export this page: Hall" }).click(),
    ]);
    const exported = JSON.parse(readFileSync(await saved.path(), "utf8")) as typeof sample;
    expect([exported.scope, exported.layout.pages.length, exported.interfaces.length]).toEqual(["page", 1, 1]);
    expect(exported.interfaces[0]!.device).toMatchObject(sample.interfaces[0]!.device!);

    const panel = await context.newPage();
    await panel.goto(`${there.url}/#/panel`);
    await panel.getByText("Connected").waitFor();
    await panel.getByRole("button", { name: "On" }).click();
    await device.has("%1POWR 1\r");
    await device.has("%1LAMP ?\r"); // it is asked what the file says
  });
});

describe("settings", () => {
  it("change the language for the panel too, keep a theme, and name the WebSocket port", async () => {
    await using host = await Host.start();
    await storeSample(host);
    const { page } = await newPage(browser);
    await page.goto(`${host.url}/#/settings`);
    await page.getByText("Connected").waitFor();
    await page.getByText("Varnholt").waitFor();
    await page.getByRole("radio", { name: "中文" }).click();
    await page.getByRole("heading", { name: "设置" }).waitFor();
    await page.getByRole("radio", { name: "深色" }).click();
    const setDeveloperMode = async (name: string, told: string) => {
      await page.getByRole("button", { name }).and(page.getByText(name)).click();
      await page.getByText(told).waitFor();
    };
    await setDeveloperMode("开启", "服务器控制台已开始显示日志。");
    await host.addTcp("shown", 1);
    await waitFor("the request on the console", () => host.output.includes("/addNetPortInfo"));
    await setDeveloperMode("关闭", "服务器控制台已停止显示日志。");
    await host.post("deleteAllInterfaceConfig", {});
    await waitFor("the request in the log", () => host.file("Log/Operation.log").includes("/deleteAllInterfaceConfig"));
    expect(host.output).not.toContain("/deleteAllInterfaceConfig");

    await page.goto(`${host.url}/#/panel`);
    await page.getByText("已连接").waitFor();
    expect(await page.evaluate(() => document.documentElement.dataset["theme"])).toBe("dark");

    // settings.json names the port; without it the one that is set in the browser counts.
    expect(JSON.parse(readFileSync(`${host.home}/bin/dist/settings.json`, "utf8"))).toEqual({
      http_port: host.port,
      websocket_port: host.webSocketPort,
    });
    await page.route("**/settings.json", (route) => route.fulfill({ status: 404 }));
    await page.goto(`${host.url}/#/settings`);
    await page.getByText("正在重新连接…").first().waitFor();
    await page.getByRole("spinbutton", { name: "WebSocket 端口" }).fill(String(host.webSocketPort));
    await page.getByRole("button", { name: "应用" }).click();
    await page.getByText("已连接").waitFor();
  });

  it.each([
    ["a proxy with both on one port", false],
    ["a forwarded port", true],
  ])("find the WebSocket behind %s, and fetch what is unchanged once", async (_, mere) => {
    await using host = await Host.start();
    await using front = await FrontPort.start(host, mere);
    await storeSample(host);
    const { page, context } = await newPage(browser);
    const sockets: string[] = [];
    page.on("websocket", (socket) => sockets.push(socket.url()));
    await page.goto(`http://127.0.0.1:${front.port}/#/panel`);
    await page.getByText("Connected").waitFor();
    const shared = `ws://127.0.0.1:${front.port}/ws`;
    expect(sockets).toEqual(mere ? [shared, `ws://127.0.0.1:${host.webSocketPort}/`] : [shared]);

    const panel = await context.newPage();
    const answered = (route: string, status: number) =>
      panel.waitForResponse((reply) => reply.url().endsWith(route) && reply.status() === status);
    const first = Promise.all([answered("getPageLayoutInfo", 200), answered("getMaterialList", 200)]);
    await panel.goto(`${host.url}/#/panel`);
    await first;
    await panel.getByRole("button", { name: "On" }).waitFor();
    const again = Promise.all([answered("getPageLayoutInfo", 304), answered("getMaterialList", 304)]);
    await panel.evaluate(() => document.dispatchEvent(new Event("visibilitychange")));
    await again;
  });

  it("tell errors that nothing caught to the server's log, each once", async () => {
    await using host = await Host.start();
    const { page } = await newPage(browser);
    await page.goto(host.url);
    await page.getByText("Connected").waitFor();
    const fail = (text: string) =>
      page.evaluate((text) => {
        const throwLater = () =>
          setTimeout(() => {
            throw new RangeError(text);
          });
        throwLater();
        throwLater();
      }, text);
    const log = () => (existsSync(`${host.userData}/ClientError.log`) ? host.file("ClientError.log") : "");
    const told = (text: string) => log().split(`source=uncaught message=RangeError: ${text}`).length - 1;
    await fail("made for the log");
    await waitFor("the log", () => told("made for the log"));
    await fail("made for the log");
    await fail("another one");
    await waitFor("the next error in the log", () => told("another one"));
    expect([told("made for the log"), told("another one")]).toEqual([1, 1]);
  });
});

it.each([
  [{ form: "control pages", version: 99 }, "These pages were made with a newer version"],
  [{ pages: [{ title: "Hall" }] }, "The stored pages come from another program"],
])("stored pages that this application can't edit stay as they are: %j", async (layout, told) => {
  await using host = await Host.start();
  await host.post("setCentralControlWebLayout", { data: layout });
  const { page } = await newPage(browser);
  await page.goto(host.url);
  await page.getByText(told).waitFor();
  await page.keyboard.press("Control+S");
  await page.goto(`${host.url}/#/panel`);
  await page.getByText(told).waitFor();
  expect(await host.read("getPageLayoutInfo")).toEqual(layout);
});
