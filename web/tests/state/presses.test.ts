import { beforeEach, describe, expect, it } from "vitest";
import {
  type ButtonComponent,
  type Component,
  newComponent,
  type PressMode,
  type SliderComponent,
} from "../../src/model/layout.ts";
import { Presses } from "../../src/panel/presses.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { settled } from "../support/settled.ts";

const at = (x: number, y: number) => ({ x, y });
const inside = at(10, 10);
const outside = at(900, 900);

const button = (mode: PressMode, more: Partial<ButtonComponent> = {}): ButtonComponent => ({
  ...newComponent("button", 0, 0),
  ...{ id: 1, mode, hold: 800, interval: 300, ...more },
});
const toggle = (confirm = "") => ({ ...newComponent("switch", 0, 0), id: 1, confirm });
const link = { ...newComponent("link", 0, 0), id: 1, target: "p2" };
/** Its rail has 256 px from x 32 on, and 11 positions, 25.6 px apart. */
const slider = (more: Partial<SliderComponent> = {}) => ({ ...newComponent("slider", 0, 0), id: 1, ...more });
const rail = (position: number) => at(32 + 25.6 * position, 40);

let clock: FakeClock;
let presses: Presses;
/** The calls of the hooks, in order, and the answers to what was sent. */
let log: string[];
let targets: Component[];
let values: Map<number, number>;
let isAllowed: boolean;
let agrees: boolean;
/** What was sent and waits for its answer; all of it arrives at once where this is not set. */
let held: ((arrived: boolean) => void)[] | undefined;

const shown = (id = 1) => values.get(id) ?? 0;

beforeEach(() => {
  clock = new FakeClock();
  [log, targets, values, held] = [[], [], new Map<number, number>(), undefined];
  [isAllowed, agrees] = [true, true];
  const note = (word: string, id: number) => log.push(id === 1 ? word : `${word} ${id}`);
  presses = new Presses(
    {
      targets: () => targets,
      side: () => 48,
      isAllowed: () => {
        if (!isAllowed) log.push("refused");
        return isAllowed;
      },
      setPressed: (id, pressed) => note(pressed ? "pressed" : "free", id),
      confirm: (component) => {
        if (component.confirm) log.push(component.confirm);
        return Promise.resolve(!component.confirm || agrees);
      },
      fire: ({ id }, trigger) => {
        note(trigger, id);
        return held ? new Promise((resolve) => held!.push(resolve)) : Promise.resolve(true);
      },
      isOn: ({ id }) => shown(id) === 1,
      setOn: (id, on) => values.set(id, on ? 1 : 0),
      position: ({ id }) => values.get(id) ?? 5,
      setTo: ({ id }) => values.get(id),
      setPosition: (id, position) => void (position === undefined ? values.delete(id) : values.set(id, position)),
      follow: ({ target }) => log.push(`to ${target}`),
    },
    clock,
  );
});

/**
 * What one finger does: it goes down, leaves, comes back, is lifted, is lifted off the component, is taken away; at a
 * position of a slider's rail where there is a number. A number alone: so many ms pass. `yes`, `no`: what was sent has
 * arrived or not.
 */
async function finger(steps: string): Promise<void> {
  for (const step of steps.split(" ")) {
    const [, word, number] = /^([a-z]*)(.*)$/.exec(step)!;
    const place = number ? rail(Number(number)) : inside;
    if (word === "down") presses.down(1, place);
    else if (word === "to") presses.move(1, place);
    else if (word === "out") presses.move(1, outside);
    else if (word === "up") presses.up(1, place);
    else if (word === "off") presses.up(1, outside);
    else if (word === "gone") presses.cancel(1);
    else if (word === "") await clock.pass(Number(number));
    else {
      log.push(word!);
      held!.shift()!(word === "yes");
    }
    await settled();
  }
}

describe("a finger on a button", () => {
  it.each<[string, PressMode, string, string]>([
    ["sends when it is lifted", "click", "down 5000 up", "pressed free click"],
    ["sends nothing when it is lifted elsewhere", "click", "down out off", "pressed free free"],
    ["can come back", "click", "down out to up", "pressed free pressed free click"],
    ["sends nothing when it is taken away", "click", "down gone up", "pressed free"],
    ["sends when it goes down, and only then", "press", "down out off", "pressed press free"],
    ["sends both, wherever it is lifted", "pressRelease", "down out off", "pressed press free release"],
    ["is released when it is taken away", "pressRelease", "down gone", "pressed press free release"],
    ["releases once the press was answered", "pressRelease", "down up yes", "pressed press free yes release"],
    ["sends at once and after each pause", "repeat", "down 299 1 300 up 5000", "pressed repeat repeat repeat free"],
    ["ends when it is taken away", "repeat", "down gone 5000", "pressed repeat free"],
    ["repeats only what arrived", "repeat", "down 5000 yes 300 no 5000", "pressed repeat yes repeat no"],
    ["sends once when it was held long enough", "long", "down 800 to up", "pressed free longPress free"],
    ["sends nothing when it was too short", "long", "down 799 up 5000", "pressed free"],
    ["sends nothing when it has left", "long", "down 400 out to 5000 up", "pressed free pressed free"],
    ["sends nothing when it is taken away", "long", "down gone 5000", "pressed free"],
  ])("%s (%s: %s)", async (_, mode, steps, expected) => {
    targets = [button(mode)];
    if (/yes|no/.test(steps)) held = [];
    await finger(steps);
    expect(log.join(" ")).toBe(expected);
  });

  it.each(["click", "press", "long"] as const)("asks before it sends (%s)", async (mode) => {
    targets = [button(mode, { confirm: "sure?" })];
    const trigger = mode === "long" ? "longPress" : mode;
    const asked = () => log.filter((one) => one === "sure?" || one === trigger);
    await finger("down 800 up");
    expect(asked()).toEqual(["sure?", trigger]);
    [agrees, log] = [false, []];
    await finger("down 800 up");
    expect(asked()).toEqual(["sure?"]);
  });

  it("is refused without a connection, but for a link", async () => {
    [isAllowed, targets] = [false, [button("click")]];
    expect(presses.down(1, inside)).toBe(false);
    targets = [link];
    await finger("down up");
    expect(log).toEqual(["refused", "pressed", "free", "to p2"]);
  });

  it("presses nothing where nothing is near", () => {
    targets = [button("press")];
    expect([presses.down(1, outside), log]).toEqual([false, []]);
  });
});

describe("several fingers", () => {
  beforeEach(() => (targets = [button("pressRelease"), button("repeat", { id: 2, x: 400 })]));
  const other = at(410, 10);

  it("press several components, each for itself", async () => {
    await finger("down");
    presses.down(2, other);
    await finger("up 300");
    presses.up(2, other);
    await finger("5000");
    expect(log).toEqual(["pressed", "press", "pressed 2", "repeat 2", "free", "release", "repeat 2", "free 2"]);
  });

  it("press one component once", async () => {
    await finger("down");
    expect(presses.down(2, inside)).toBe(false);
    presses.up(2, inside);
    presses.move(2, outside);
    expect(log).toEqual(["pressed", "press"]);
  });

  it("are all taken away at once", async () => {
    await finger("down");
    presses.down(2, other);
    presses.cancelAll();
    await finger("up 5000");
    expect(log).toEqual(["pressed", "press", "pressed 2", "repeat 2", "free", "free 2", "release"]);
    expect(presses.down(1, inside)).toBe(true);
  });
});

describe("a finger on what has a state", () => {
  const asking = slider({ live: true, confirm: "sure?" });

  it.each<[string, Component, number, string, string, number]>([
    ["sends on", toggle(), 0, "down up yes", "pressed free on yes", 1],
    ["sends off", toggle(), 1, "down up yes", "pressed free off yes", 0],
    ["shows the new state at once", toggle(), 0, "down up", "pressed free on", 1],
    ["goes back when it did not arrive", toggle(), 0, "down up no", "pressed free on no", 0],
    ["asks, and heeds the no", toggle("sure?"), 0, "down up", "pressed free sure?", 0],
    ["takes its position on the rail", slider(), 7, "down3 up3 yes", "pressed free position3 yes", 3],
    ["takes the nearest position", slider(), 7, "down3.6 up3.6", "pressed free position4", 4],
    ["takes the first before the rail", slider(), 7, "down-1.2 up-1.2", "pressed free position0", 0],
    ["takes the last behind the rail", slider(), 7, "down11.2 up11.2", "pressed free position10", 10],
    ["sends the last position alone", slider(), 0, "down2 to9 up6", "pressed free position6", 6],
    ["sends nothing where it began", slider(), 6, "down2 to9 up6", "pressed free", 6],
    ["goes back when it is taken away", slider(), 4, "down8 gone", "pressed free", 4],
    ["goes back to where it was", slider(), 4, "down8 up8 no", "pressed free position8 no", 4],
    [
      "sends while it is moved: the newest position once the last one has arrived",
      slider({ live: true }),
      0,
      "down0 to1 to2 to3 yes up5 yes no",
      "pressed position1 yes position3 free yes position5 no",
      3,
    ],
    [
      "goes back to what has arrived",
      slider({ live: true }),
      0,
      "down1 to2 yes to3 no gone",
      "pressed position2 yes position3 no free",
      2,
    ],
    ["asks at the end alone, and heeds the no", asking, 0, "down1 to2 up3", "pressed free sure?", 0],
  ])("%s", async (_, component, before, steps, expected, after) => {
    [targets, values, held, agrees] = [[component], new Map([[1, before]]), [], false];
    await finger(steps);
    expect([log.join(" "), shown()]).toEqual([expected, after]);
  });

  it.each([
    ["sends its start when nothing was sent before", "down5 up5 yes", "pressed free position5 yes", 5],
    ["shows its start again when nothing has arrived", "down3 up3 no", "pressed free position3 no", undefined],
  ])("a slider %s", async (_, steps, expected, after) => {
    [targets, held] = [[slider()], []];
    await finger(steps);
    expect([log.join(" "), values.get(1)]).toEqual([expected, after]);
  });

  it("follows the rail of an upright slider from below", async () => {
    targets = [slider({ vertical: true, width: 80, height: 316 })];
    presses.down(1, at(40, 316 - 58 - 40));
    presses.up(1, at(40, 316 - 58 - 40));
    await settled();
    expect(shown()).toBe(2);
  });
});

it.each<[string, Component, boolean]>([
  ["a usual button", button("click"), true],
  ["a switch", toggle(), true],
  ["a button that is held", button("repeat"), false],
  ["a button that sends on press", button("press"), false],
  ["a slider", slider(), false],
])("a finger on %s may swipe: %s", (_, component, expected) => {
  targets = [component];
  presses.down(1, component.type === "slider" ? rail(3) : inside);
  expect([presses.canSwipe(1), presses.canSwipe(2)]).toEqual([expected, false]);
});

describe("without a pointer", () => {
  it.each<[string, Component, string[]]>([
    ["click", button("click"), ["click"]],
    ["press", button("press"), ["press"]],
    ["press and release", button("pressRelease"), ["press", "release"]],
    ["repeat, once", button("repeat"), ["repeat"]],
    ["long press", button("long"), ["longPress"]],
    ["switch", toggle(), ["on"]],
    ["link", link, ["to p2"]],
  ])("a whole %s is done", async (_, component, expected) => {
    presses.activate(component);
    await clock.pass(5000);
    expect(log).toEqual(expected);
  });

  it.each([
    [3, 1, 4],
    [3, -10, 0],
    [3, 1000, 10],
  ])("a slider at %i goes by %i to %i", async (before, by, after) => {
    values.set(1, before);
    presses.stepSlider(slider(), by);
    await settled();
    expect([shown(), log]).toEqual([after, [`position${after}`]]);
  });

  it("nothing is done without a connection", async () => {
    isAllowed = false;
    presses.activate(button("click"));
    presses.stepSlider(slider(), 1);
    await settled();
    expect([log, shown()]).toEqual([["refused", "refused"], 0]);
  });
});
