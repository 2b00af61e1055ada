import { expect, it } from "vitest";
import { mostEntries, SentLines, Terminal } from "../../src/author/interfaces/terminal.svelte.ts";
import { isWanted, readTraffic, type TrafficFilter, trafficText } from "../../src/model/traffic.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeEvents } from "../support/fakeEvents.ts";

const component = { source: "component", component: 4, trigger: "click", command: "Power?", client: "10.0.0.951234" };
const sent = { id: 7, time: 1_795_391_102_007, out: true, hex: "504F5752203F0D", error: 0, ...component };
const got = { id: 8, time: 1_795_391_102_031, out: false, hex: "6F6EFF", peer: "10.0.0.7:4001", cut: true };

it("asks for what is new, all of it at once, and not while it is paused or hidden", async () => {
  const [clock, events] = [new FakeClock(), new FakeEvents()];
  const asked: number[] = [];
  let last = 0;
  const entriesAfter = (after: number) =>
    Array.from({ length: Math.min(500, last - after) }, (_, at) => ({ ...got, id: after + at + 1 }));
  const traffic = (_: number, after: number) => {
    asked.push(after);
    const entries = entriesAfter(after);
    return Promise.resolve({ entries, last: after + entries.length, missed: false, fileUntil: null });
  };
  const terminal = new Terminal({ equipment: { traffic }, clock, events }, 1);
  last = 1200;
  const end = terminal.follow();
  await clock.pass(0);
  expect([asked, terminal.entries.length, terminal.isMissed]).toEqual([[0, 500, 1000, 1200], 1200, false]);
  terminal.isPaused = true;
  await clock.pass(1000);
  await terminal.ask(); // after a line was sent
  terminal.isPaused = false;
  events.shown = false;
  await clock.pass(1000);
  expect(asked.length).toBe(4);
  events.shown = true;
  last = 3000;
  await clock.pass(500);
  expect([terminal.entries.length, terminal.entries.at(-1)?.id, terminal.isCut]).toEqual([mostEntries, 3000, true]);
  end();
});

it.each<[TrafficFilter, boolean[]]>([
  [{ direction: "all", text: "" }, [true, true]],
  [{ direction: "out", text: "" }, [true, false]],
  [{ direction: "in", text: " ON" }, [false, true]],
  [{ direction: "all", text: "powr ?" }, [true, false]],
  [{ direction: "all", text: "4f 57" }, [true, false]],
  [{ direction: "all", text: "6eff" }, [false, true]],
  [{ direction: "all", text: "power?" }, [true, false]],
  [{ direction: "all", text: "10.0.0.7" }, [false, true]],
  [{ direction: "in", text: "powr" }, [false, false]],
])("shows of the traffic what %j asks for", (filter, wanted) => {
  const { entries } = readTraffic({ entries: [sent, got], last: 8 });
  expect(entries.map((one) => isWanted(one, filter))).toEqual(wanted);
});

it("writes the traffic as lines", () => {
  const refused = { ...sent, error: 10061, errorText: "refused\r\n", command: "", source: "terminal" };
  expect(trafficText(readTraffic({ entries: [sent, refused, got, {}] }).entries)).toBe(
    "2026-11-22T23:45:02.007Z\tout\t50 4F 57 52 20 3F 0D\tPOWR ?·\t4 click\tPower?\t10.0.0.951234\n" +
      "2026-11-22T23:45:02.007Z\tout\t50 4F 57 52 20 3F 0D\tPOWR ?·\tterminal\t\t10.0.0.951234\t10061 refused\n" +
      "2026-11-22T23:45:02.031Z\tin\t6F 6E FF …\ton·\t10.0.0.7:4001\n",
  );
});

it("brings back the lines that were sent, and what was being typed", () => {
  const lines = new SentLines();
  const line = (notation: string) => ({ isText: true, notation, terminator: "", asciiEncode: 0 });
  for (const text of ["one", "two", "two"]) lines.add(line(text));
  const steps = [-1, -1, -1, 1, 1, 1] as const;
  const shown: (string | undefined)[] = [];
  for (const by of steps) shown.push(lines.step(by, line(shown.findLast(Boolean) ?? "typing"))?.notation);
  expect(shown).toEqual(["two", "one", undefined, "two", "typing", undefined]);
});
