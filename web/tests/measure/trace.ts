import type { Browser, Page } from "playwright-core";

interface TraceEvent {
  name: string;
  ph: string;
  pid: number;
  tid: number;
  /** Start and length, in µs. */
  ts: number;
  dur?: number;
  args?: { name?: string };
}

/** What the events of the page's main thread count as; those of other names are the browser's own work. */
const names = {
  scripting: "EventDispatch FunctionCall EvaluateScript RunMicrotasks FireAnimationFrame TimerFire MinorGC MajorGC",
  layout: "UpdateLayoutTree Layout",
  painting: "PrePaint Paint Layerize Commit",
};
type Kind = keyof typeof names;
const kinds = new Map(
  (Object.keys(names) as Kind[]).flatMap((kind) => names[kind].split(" ").map((one) => [one, kind])),
);

/** The page's main thread while something was done: lengths in ms. */
export type MainThread = Record<"duration" | "longest" | "busy" | Kind, number>;

/** Records a trace of the browser while `act` runs, and adds up what the page's main thread did. */
export async function traced(browser: Browser, page: Page, act: () => Promise<void>): Promise<MainThread> {
  await browser.startTracing(page, {
    categories: ["toplevel", "devtools.timeline", "disabled-by-default-devtools.timeline", "blink.user_timing"],
  });
  await page.evaluate(() => performance.mark("begin"));
  await act();
  await page.evaluate(() => performance.mark("end"));
  const { traceEvents } = JSON.parse((await browser.stopTracing()).toString()) as { traceEvents: TraceEvent[] };
  const [begin, end] = ["begin", "end"].map((name) => traceEvents.find((one) => one.name === name && one.ph !== "M")!);
  const own = traceEvents
    .filter(
      (one) =>
        one.pid === begin!.pid && one.tid === begin!.tid && one.ph === "X" && one.ts >= begin!.ts && one.ts <= end!.ts,
    )
    .sort((one, other) => one.ts - other.ts || (other.dur ?? 0) - (one.dur ?? 0));
  const sums = { duration: (end!.ts - begin!.ts) / 1000, longest: 0, busy: 0, scripting: 0, layout: 0, painting: 0 };
  const isTask = (name: string) => name.endsWith("RunTask");
  // Each event's time without that of the events inside it, so that layout which a script asks for counts as layout.
  const open: { until: number; kind: Kind | undefined }[] = [];
  for (const one of own) {
    const length = (one.dur ?? 0) / 1000;
    while (open.length && open.at(-1)!.until <= one.ts) open.pop();
    if (isTask(one.name) && open.length === 0) {
      sums.busy += length;
      sums.longest = Math.max(sums.longest, length);
    }
    const outer = open.at(-1)?.kind;
    const kind = kinds.get(one.name) ?? outer;
    if (kind !== outer) {
      if (kind) sums[kind] += length;
      if (outer) sums[outer] -= length;
    }
    open.push({ until: one.ts + (one.dur ?? 0), kind });
  }
  return sums;
}
