/**
 * Measures how evenly a page of 500 components is dragged. It logs figures and demands none: they are the machine's.
 */
import { afterAll, beforeAll, it } from "vitest";
import type { Browser } from "playwright-core";
import { newPage, startBrowser } from "../support/browser.ts";
import { Host } from "../support/host.ts";
import { traced } from "./trace.ts";

let browser: Browser;
beforeAll(async () => void (browser = await startBrowser()));
afterAll(() => browser.close());

it.each(["one", "all"])("drags %s of 500 components", async (which) => {
  await using host = await Host.start();
  const components = Array.from({ length: 500 }, (_, at) => ({
    id: at + 1,
    type: at % 10 === 0 ? "slider" : "button",
    x: 10 + (at % 25) * 50,
    y: 10 + Math.floor(at / 25) * 39,
    width: 44,
    height: 34,
    fontSize: 12,
    look: { text: `B${at}`, icon: "power" },
  }));
  const pages = [{ id: "p1", name: "Full", width: 1280, height: 800, components }];
  await host.post("setCentralControlWebLayout", { data: { form: "control pages", version: 1, startPage: "", pages } });
  const { page } = await newPage(browser);
  await page.goto(`${host.url}/#/pages`);
  await page.getByRole("link", { name: "Full" }).waitFor();
  const opening = await page.evaluate(async () => {
    const start = performance.now();
    location.hash = "#/edit/p1";
    while (document.querySelectorAll(".sheet .part").length < 500) await new Promise(requestAnimationFrame);
    await new Promise(requestAnimationFrame);
    return performance.now() - start;
  });
  console.log(`${which}: opening ${opening.toFixed(0)} ms`);
  if (which === "all") await page.keyboard.press("Control+A");
  const box = (await page.locator(".sheet .part").nth(262).boundingBox())!;
  const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
  await page.mouse.move(x, y);
  await page.mouse.down();
  await page.mouse.move(x + 10, y);
  // The moves come from inside the page, one for each frame: what is measured is the application and not the driver.
  const frames = await page.evaluate(
    async ({ x, y }) => {
      const canvas = document.querySelector("[data-canvas]")!;
      const times: number[] = [];
      const work: number[] = [];
      let last = await new Promise<number>(requestAnimationFrame);
      for (let step = 0; step < 180; ++step) {
        const start = performance.now();
        const at = { clientX: x + 60 * Math.sin(step / 20), clientY: y + 40 * Math.cos(step / 17) };
        canvas.dispatchEvent(new PointerEvent("pointermove", { ...at, pointerId: 1, bubbles: true }));
        await Promise.resolve();
        void canvas.getBoundingClientRect();
        work.push(performance.now() - start);
        const now = await new Promise<number>(requestAnimationFrame);
        times.push(now - last);
        last = now;
      }
      return { times, work };
    },
    { x, y },
  );
  // The same way again, now with input events of the browser, and what it writes down about them.
  const thread = await traced(browser, page, async () => {
    for (let step = 0; step < 180; ++step) {
      await page.mouse.move(x + 60 * Math.sin(step / 20), y + 40 * Math.cos(step / 17));
    }
    await page.mouse.up();
  });
  const sorted = (values: number[]) => [...values].sort((one, other) => one - other);
  const at = (values: number[], share: number) => sorted(values)[Math.floor(share * (values.length - 1))]!.toFixed(1);
  const slow = frames.times.filter((time) => time > 20).length / frames.times.length;
  console.log(
    `${which}: frame ${at(frames.times, 0.5)} ms median, ${at(frames.times, 0.95)} ms at 95 %, ` +
      `${(slow * 100).toFixed(1)} % over 20 ms; ` +
      `script and layout ${at(frames.work, 0.5)} ms median, ${at(frames.work, 0.95)} ms at 95 %`,
  );
  const share = (time: number) => `${((100 * time) / thread.duration).toFixed(1)} %`;
  console.log(
    `${which}, trace of 180 moves and the drop in ${(thread.duration / 1000).toFixed(1)} s: ` +
      `longest task ${thread.longest.toFixed(1)} ms; main thread busy ${share(thread.busy)}, ` +
      `scripting ${share(thread.scripting)}, style and layout ${share(thread.layout)}, ` +
      `painting ${share(thread.painting)}`,
  );
});
