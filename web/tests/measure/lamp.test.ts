/**
 * Measures the time from the byte that a device sends to the lamp on the panel. It logs figures and demands none: they
 * are the machine's. A device that is asked is silent here, so that what it sends comes at times of its own.
 */
import { it } from "vitest";
import { newPage, startBrowser } from "../support/browser.ts";
import { TcpDevice } from "../support/equipment.ts";
import { Host } from "../support/host.ts";

const samples = 40;

it("shows on a lamp what a device has just said", async () => {
  await using host = await Host.start();
  await using browser = { it: await startBrowser(), [Symbol.asyncDispose]: () => browser.it.close() };
  await using device = await TcpDevice.start();
  await host.addTcp("Projector", device.port);
  const { nodeId } = (await host.read("getConfigList")).configList[0]!;
  const value = { place: "p", name: "Power", type: "text" };
  const patterns = [{ form: "text", pattern: "POWR={p}", values: [value] }];
  const framing = { kind: "terminator", hex: "0D" };
  const data = { version: 1, devices: [{ nodeId, framing, patterns }] };
  await host.post("/api/equipment/config", { data });
  const { page } = await newPage(browser.it);
  const lamp = { id: 1, type: "lamp", x: 10, y: 10, width: 300, height: 60, look: { text: "is {value Power}" } };
  const pages = [{ id: "p1", name: "Hall", width: 1280, height: 800, components: [lamp] }];
  await host.post("setCentralControlWebLayout", { data: { form: "control pages", version: 1, pages } });
  await page.goto(`${host.url}/#/panel`);
  await page.getByText("is –").waitFor();
  const times: number[] = [];
  for (let at = 0; at < samples; ++at) {
    await new Promise((done) => setTimeout(done, 700 + Math.random() * 500));
    // The page itself waits for the text, at each frame; both programs read the same clock.
    const shown = page.evaluate(async (text) => {
      while (!document.querySelector(".text")?.textContent.includes(text)) await new Promise(requestAnimationFrame);
      return Date.now();
    }, `is ${at}`);
    const sent = Date.now();
    device.say(`POWR=${at}\r`);
    times.push((await shown) - sent);
  }
  times.sort((one, other) => one - other);
  const share = (part: number) => times[Math.floor(part * (times.length - 1))]!;
  console.log(`byte to lamp: median ${share(0.5)} ms, 90 % ${share(0.9)} ms, longest ${share(1)} ms`);
});
