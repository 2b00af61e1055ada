import { expect, it } from "vitest";
import { codes, ServerError } from "../../src/api/server.ts";
import { InterfaceStates } from "../../src/author/interfaces/states.svelte.ts";
import { bytesText } from "../../src/model/interfaceStates.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeEvents } from "../support/fakeEvents.ts";

it("asks for the states while the page is visible, and keeps what it knows when the server is away", async () => {
  const [clock, events] = [new FakeClock(), new FakeEvents()];
  let asked = 0;
  let isAway = false;
  const interfaceStates = () => {
    asked += 1;
    const list = [
      { nodeId: 3, state: "failed", since: 5, lastOut: 7, lastIn: null, lastError: { code: 10061, text: "refused" } },
      { nodeId: 4, state: "melting" },
    ];
    return isAway ? Promise.reject(new ServerError(codes.unreachable)) : Promise.resolve({ interfaces: list });
  };
  const states = new InterfaceStates({ equipment: { interfaceStates }, clock, events });
  const end = states.follow();
  await clock.pass(2000);
  expect(asked).toBe(2);
  expect([...states.known!.keys()]).toEqual([3]);
  expect(states.known!.get(3)).toMatchObject({ active: 7, bytesIn: 0, lastError: { code: 10061, text: "refused" } });
  events.shown = false;
  await clock.pass(10_000);
  expect(asked).toBe(2);
  [events.shown, isAway] = [true, true];
  await clock.pass(2000);
  expect([states.fault instanceof ServerError, states.known?.size]).toEqual([true, 1]);
  isAway = false;
  await clock.pass(2000);
  expect([states.fault, asked]).toEqual([undefined, 4]);
  end();
  await clock.pass(10_000);
  expect(asked).toBe(4);
});

it.each([
  [0, "0 B"],
  [999, "999 B"],
  [1000, "1.0 kB"],
  [9949, "9.9 kB"],
  [9950, "10 kB"],
  [999_499, "999 kB"],
  [999_500, "1.0 MB"],
  [5e12, "5.0 TB"],
])("writes %d bytes as %s", (bytes, text) => expect(bytesText(bytes)).toBe(text));
