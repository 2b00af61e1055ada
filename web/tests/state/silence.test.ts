import { expect, it } from "vitest";
import { Silence } from "../../src/panel/silence.ts";
import { FakeClock } from "../support/fakeClock.ts";

it("acts after a silence, once, and not while a finger is down", async () => {
  const clock = new FakeClock();
  let [times, isHeld] = [0, false];
  const silence = new Silence(clock, () => {
    if (!isHeld) times += 1;
    return !isHeld;
  });
  const passed = async (seconds: number) => {
    await clock.pass(seconds * 1000);
    return times;
  };
  silence.set(0);
  expect(await passed(90_000)).toBe(0);
  silence.set(60);
  expect(await passed(59)).toBe(0);
  silence.touch();
  expect(await passed(59)).toBe(0);
  expect(await passed(1)).toBe(1);
  expect(await passed(600)).toBe(1);
  isHeld = true;
  silence.touch();
  expect(await passed(61)).toBe(1);
  isHeld = false;
  expect(await passed(59)).toBe(2);
});
