import { existsSync, readFileSync, writeFileSync } from "node:fs";
import { afterAll, beforeAll, describe, expect, it } from "vitest";
import type { Browser } from "playwright-core";
import { deflateSync } from "node:zlib";
import sample from "../../../demo/sample_project.json" with { type: "json" };
import { connected, newPage, save, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { FrontPort, Host } from "../support/host.ts";
import { waitFor } from "../support/wait.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

function crc(bytes: Buffer): number {
  let rest = ~0;
  for (const byte of bytes) {
    rest ^= byte;
    for (let bit = 0; bit < 8; ++bit) rest = (rest >>> 1) ^ (rest & 1 ? 0xedb88320 : 0);
  }
  return ~rest >>> 0;
}

/** A PNG of one colour; noise makes it large. */
function png(width: number, height: number, noise = false): Buffer {
  const chunk = (type: string, data: Buffer) => {
    const content = Buffer.concat([Buffer.from(type), data]);
    const size = Buffer.alloc(4);
    size.writeUInt32BE(data.length);
    const sum = Buffer.alloc(4);
    sum.writeUInt32BE(crc(content));
    return Buffer.concat([size, content, sum]);
  };
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header.set([8, 2, 0, 0, 0], 8);
  let seed = 1;
  const next = () => (seed = (Math.imul(seed, 1103515245) + 12345) >>> 0) >>> 16;
  const rows = Buffer.alloc((width * 3 + 1) * height);
  if (noise) for (let at = 0; at < rows.length; ++at) rows[at] = at % (width * 3 + 1) === 0 ? 0 : next();
  return Buffer.concat([
    Buffer.from([137, 80, 78, 71, 13, 10, 26, 10]),
    chunk("IHDR", header),
    chunk("IDAT", deflateSync(rows, { level: 1 })),
    chunk("IEND", Buffer.alloc(0)),
  ]);
}

const image = (name: string, buffer: Buffer) => ({ name, mimeType: "image/png", buffer });

async function storeSample(host: Host): Promise<void> {
  await host.post("setCentralControlWebLayout", { data: sample.layout });
  await host.post("updateComponentInteraction", { data: sample.interactions });
}

describe("materials", () => {
  it("are added, warned of and refused by size, scaled down, and replaced in place", async () => {
    await using host = await Host.start();
    await storeSample(host);
    const { page, errors } = await newPage(browser);
    await page.goto(`${host.url}/#/materials`);
    await connected(page);
    const chosen = page.waitForEvent("filechooser");
    await page.getByRole("button", { name: "Add images" }).click();
    await (
      await chosen
    ).setFiles([
      image("small.png", png(4, 2)),
      image("wide.png", png(800, 600, true)),
      image("huge.png", Buffer.alloc(8_000_001)),
    ]);
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
    const opened = page.waitForEvent("filechooser");
    await page.getByRole("button", { name: "Replace" }).first().click();
    await (await opened).setFiles(image("other.png", png(6, 6)));
    await page.getByText("6 × 6").waitFor();
    await save(page);
    const stored = (await host.read("getMaterialList")).materialList;
    expect(stored.map((one) => [one.name, one.width])).toEqual([
      ["small", 6],
      ["wide", 128],
    ]);
    expect(stored[0]?.id).toBe(id);

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

    const panel = await context.newPage();
    await panel.goto(`${there.url}/#/panel`);
    await panel.getByText("Connected").waitFor();
    await panel.getByRole("button", { name: "On" }).click();
    await device.has("%1POWR 1\r");
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
    // Records are written a while after their event; the mode at that time counts.
    const logged = (request: string) =>
      waitFor(`${request} in the log`, () => host.file("Log/Operation.log").includes(`/${request}`));
    const setDeveloperMode = (name: string) =>
      Promise.all([
        page.waitForResponse(/setDeveloperMode/),
        page.getByRole("button", { name }).and(page.getByText(name)).click(),
      ]);
    await logged("setUserLanguage");
    await setDeveloperMode("开启");
    await page.getByText("服务器控制台已开始显示日志。").waitFor();
    await host.addTcp("shown", 1);
    await waitFor("the request on the console", () => host.output.includes("/addNetPortInfo"));
    await setDeveloperMode("关闭");
    await page.getByText("服务器控制台已停止显示日志。").waitFor();
    await host.post("deleteAllInterfaceConfig", {});
    await logged("deleteAllInterfaceConfig");
    await setDeveloperMode("开启");
    await host.post("deleteInterfaceConfig", { nodeId: 1 });
    await waitFor("the next request on the console", () => host.output.includes("/deleteInterfaceConfig"));
    expect(host.output).not.toMatch(/setUserLanguage|deleteAllInterfaceConfig/);

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
    await page.getByRole("spinbutton").fill(String(host.webSocketPort));
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
    const statuses = new Map<string, number[]>();
    panel.on("response", (reply) => {
      const route = reply.url().split("/").at(-1)!;
      statuses.set(route, [...(statuses.get(route) ?? []), reply.status()]);
    });
    await panel.goto(`${host.url}/#/panel`);
    await panel.getByRole("button", { name: "On" }).waitFor();
    await waitFor("all documents", () => statuses.get("getMaterialList"));
    const asked = () => statuses.get("getPageLayoutInfo")!.length;
    const before = asked();
    await panel.evaluate(() => document.dispatchEvent(new Event("visibilitychange")));
    await waitFor("another reading", () => statuses.get("getMaterialList")!.length >= before + 1);
    expect([
      statuses.get("getPageLayoutInfo")![0],
      statuses.get("getPageLayoutInfo")!.at(-1),
      statuses.get("getMaterialList")!.at(-1),
    ]).toEqual([200, 304, 304]);
  });

  it("tell errors that nothing caught to the server's log, each once", async () => {
    await using host = await Host.start();
    const { page } = await newPage(browser);
    await page.goto(host.url);
    await page.getByText("Connected").waitFor();
    const fail = (text: string) =>
      page.evaluate(
        (text) =>
          void [1, 2].forEach(() =>
            setTimeout(() => {
              throw new RangeError(text);
            }),
          ),
        text,
      );
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

describe("stored pages that this application can't edit", () => {
  it.each([
    [
      { form: "control pages", version: 99 },
      "These pages were made with a newer version",
      "These pages were made with a newer version of this application.",
    ],
    [
      { pages: [{ title: "Hall" }] },
      "The stored pages come from another program",
      "The stored pages come from another program and can't be shown here.",
    ],
  ])("%j", async (layout, author, panel) => {
    await using host = await Host.start();
    await host.post("setCentralControlWebLayout", { data: layout });
    const { page } = await newPage(browser);
    await page.goto(host.url);
    await page.getByText(author).waitFor();
    await page.keyboard.press("Control+S");
    await page.goto(`${host.url}/#/panel`);
    await page.getByText(panel).waitFor();
    expect(await host.read("getPageLayoutInfo")).toEqual(layout);
  });
});
