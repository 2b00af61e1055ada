import { expect, it } from "vitest";
import { codes, ServerError } from "../../src/api/server.ts";
import { emptyBinding } from "../../src/model/readBinding.ts";
import { type Component, newComponent } from "../../src/model/layout.ts";
import { Live } from "../../src/panel/live.svelte.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeEvents } from "../support/fakeEvents.ts";

const bound = (type: "switch" | "button", value: string): Component => ({
  ...newComponent(type, 0, 0),
  binding: { ...emptyBinding, value, follows: true, warns: type === "button" },
});

function room(shown: Component[]) {
  const [clock, events] = [new FakeClock(), new FakeEvents()];
  const asked: string[] = [];
  const reported: unknown[] = [];
  const is = { open: true, away: false, power: "on", state: "open" };
  const equipment = {
    values: (names: readonly string[], after: number) => {
      asked.push(`${names.join()} ${after}`);
      if (is.away) return Promise.reject(new ServerError(codes.unreachable));
      if (is.power === "broken") throw new TypeError("broken");
      const values = after < 7 ? [{ name: "Power", value: is.power, stale: false }] : [];
      return Promise.resolve({ values, last: 7 });
    },
    interfaceStates: () => Promise.resolve({ interfaces: [{ nodeId: 3, state: is.state }] }),
  };
  const commandArr = [{ portIndex: 3 }];
  const componentArr = shown.map(({ id }) => ({ componentId: id, interactionArr: [{ commandArr }] }));
  const data = { componentInteractionInfo: { componentArr } };
  const server = { interactions: () => Promise.resolve({ data, tag: "" }) };
  const live = new Live({
    equipment,
    server,
    clock,
    events,
    shown: () => shown,
    isOpen: () => is.open,
    reportError: (error) => void reported.push(error),
  });
  return { live, clock, events, asked, is, reported };
}

it("asks twice a second for what is new of the values that are shown, while somebody sees them", async () => {
  const shown = [bound("switch", "Power"), newComponent("button", 0, 0)];
  const { live, clock, events, asked, is } = room(shown);
  await clock.pass(1000);
  expect(asked).toEqual(["Power 0", "Power 7"]);
  expect(live.standing(shown[0]!)).toMatchObject({ isOn: true, isStale: false });
  expect(live.standing(shown[1]!)).toBeUndefined();
  events.shown = false;
  await clock.pass(5000);
  [events.shown, is.open] = [true, false];
  await clock.pass(5000);
  expect(asked.length).toBe(2);
  is.open = true;
  shown[0] = bound("switch", "Other");
  await clock.pass(500);
  expect(asked.at(-1)).toBe("Other 0");
  shown.length = 0;
  await clock.pass(5000);
  expect(asked.length).toBe(3);
});

it("without an answer, what is known is not up to date", async () => {
  const shown = [bound("switch", "Power")];
  const { live, clock, is, reported } = room(shown);
  await clock.pass(500);
  is.away = true;
  await clock.pass(1500);
  expect(live.standing(shown[0]!)).toMatchObject({ isOn: true, isStale: false }); // it has time to answer
  await clock.pass(500);
  expect([live.standing(shown[0]!), reported]).toMatchObject([{ isOn: true, isStale: true }, []]);
  [is.away, is.power] = [false, "broken"];
  await clock.pass(500);
  expect([live.standing(shown[0]!), reported]).toMatchObject([{ isStale: true }, [{ name: "TypeError" }]]);
  is.power = "on";
  is.away = false;
  await clock.pass(500);
  expect(live.standing(shown[0]!)).toMatchObject({ isOn: true, isStale: false });
});

it("what was just set is shown until the device had time to say what it made of it", async () => {
  const shown = [bound("switch", "Power")];
  const { live, clock } = room(shown);
  await clock.pass(500);
  live.hold(shown[0]!.id);
  await clock.pass(2000);
  live.hold(shown[0]!.id);
  await clock.pass(2900);
  expect(live.standing(shown[0]!)!.isOn).toBeUndefined();
  await clock.pass(100);
  expect(live.standing(shown[0]!)!.isOn).toBe(true);
});

it("a component says so while an interface of its commands has failed", async () => {
  const shown = [bound("button", ""), { ...bound("switch", "Power"), id: 2 }];
  const { live, clock, is } = room(shown);
  await clock.pass(500);
  expect(shown.map((one) => live.isApart(one))).toEqual([false, false]);
  is.state = "failed";
  await clock.pass(2500);
  expect(shown.map((one) => live.isApart(one))).toEqual([true, false]);
});
