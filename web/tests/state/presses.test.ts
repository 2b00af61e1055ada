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
  id: 1,
  mode,
  hold: 800,
  interval: 300,
  ...more,
});
const toggle = (confirm = "") => ({ ...newComponent("switch", 0, 0), id: 1, confirm });
const link = { ...newComponent("link", 0, 0), id: 1, target: "p2" };
/** Its rail has 256 px from x 32 on, and 11 positions, 25.6 px apart. */
const slider = (more: Partial<SliderComponent> = {}): SliderComponent => ({
  ...newComponent("slider", 0, 0),
  id: 1,
  ...more,
});
const rail = (position: number) => at(32 + 25.6 * position, 40);

let clock: FakeClock;
let presses: Presses;
/** The calls of the hooks, in order. */
let log: string[];
let targets: Component[];
let values: Map<number, number>;
let isAllowed: boolean;
/** Whether what is sent next arrives; and with `held`, what waits for its answer. */
let arrives: boolean;
let held: ((arrived: boolean) => void)[] | undefined;
let agrees: boolean;

const shown = (id = 1) => values.get(id) ?? 0;

async function answer(arrived: boolean): Promise<void> {
  held!.shift()!(arrived);
  await settled();
}

beforeEach(() => {
  clock = new FakeClock();
  [log, targets, values, held] = [[], [], new Map<number, number>(), undefined];
  [isAllowed, arrives, agrees] = [true, true, true];
  presses = new Presses(
    {
      targets: () => targets,
      side: () => 48,
      isAllowed: () => {
        if (!isAllowed) log.push("refused");
        return isAllowed;
      },
      setPressed: (id, pressed) => log.push(`${pressed ? "pressed" : "free"}${id === 1 ? "" : ` ${id}`}`),
      confirm: (component) => {
        if (component.confirm) log.push(component.confirm);
        return Promise.resolve(!component.confirm || agrees);
      },
      fire: ({ id }, trigger) => {
        log.push(id === 1 ? trigger : `${trigger} ${id}`);
        return held ? new Promise((resolve) => held!.push(resolve)) : Promise.resolve(arrives);
      },
      isOn: (id) => shown(id) === 1,
      setOn: (id, on) => values.set(id, on ? 1 : 0),
      setPosition: (id, position) => values.set(id, position),
      position: ({ id }) => shown(id),
      follow: ({ target }) => log.push(`to ${target}`),
    },
    clock,
  );
});

/** What one finger does: it goes down, leaves, comes back, is lifted, is taken away; a number: so many ms pass. */
type Step = "down" | "out" | "back" | "up" | "upOutside" | "cancel" | number;

async function finger(...steps: Step[]): Promise<void> {
  for (const step of steps) {
    if (step === "down") presses.down(1, inside);
    else if (step === "out") presses.move(1, outside);
    else if (step === "back") presses.move(1, inside);
    else if (step === "up") presses.up(1, inside);
    else if (step === "upOutside") presses.up(1, outside);
    else if (step === "cancel") presses.cancel(1);
    else await clock.pass(step);
    await settled();
  }
}

describe("a finger on a button", () => {
  it.each<[string, Component, Step[], string[]]>([
    ["click: sends when it is lifted", button("click"), ["down", 5000, "up"], ["pressed", "free", "click"]],
    [
      "click: sends nothing when it is lifted elsewhere",
      button("click"),
      ["down", "out", "upOutside"],
      ["pressed", "free", "free"],
    ],
    [
      "click: can come back",
      button("click"),
      ["down", "out", "back", "up"],
      ["pressed", "free", "pressed", "free", "click"],
    ],
    ["click: sends nothing when it is taken away", button("click"), ["down", "cancel", "up"], ["pressed", "free"]],
    [
      "press: sends when it goes down, and only then",
      button("press"),
      ["down", "out", "upOutside"],
      ["pressed", "press", "free"],
    ],
    ["pressRelease: sends both", button("pressRelease"), ["down", 5000, "up"], ["pressed", "press", "free", "release"]],
    [
      "pressRelease: stays pressed until it is lifted, wherever",
      button("pressRelease"),
      ["down", "out", "upOutside"],
      ["pressed", "press", "free", "release"],
    ],
    [
      "pressRelease: is released when it is taken away",
      button("pressRelease"),
      ["down", "cancel"],
      ["pressed", "press", "free", "release"],
    ],
    [
      "repeat: sends at once and after each pause",
      button("repeat"),
      ["down", 299, 1, 300, "up", 5000],
      ["pressed", "repeat", "repeat", "repeat", "free"],
    ],
    ["repeat: ends when it is taken away", button("repeat"), ["down", "cancel", 5000], ["pressed", "repeat", "free"]],
    [
      "long: sends when it was held long enough",
      button("long"),
      ["down", 800, "up"],
      ["pressed", "free", "longPress", "free"],
    ],
    [
      "long: does not look pressed again once it has sent",
      button("long"),
      ["down", 800, "back", "up"],
      ["pressed", "free", "longPress", "free"],
    ],
    ["long: sends nothing when it was too short", button("long"), ["down", 799, "up", 5000], ["pressed", "free"]],
    [
      "long: sends nothing when it left, also when it came back",
      button("long"),
      ["down", 400, "out", "back", 5000, "up"],
      ["pressed", "free", "pressed", "free"],
    ],
    ["long: sends nothing when it is taken away", button("long"), ["down", "cancel", 5000], ["pressed", "free"]],
  ])("%s", async (_, component, steps, expected) => {
    targets = [component];
    await finger(...steps);
    expect(log).toEqual(expected);
  });

  it.each(["click", "press", "long"] as const)("asks before it sends (%s)", async (mode) => {
    targets = [button(mode, { confirm: "sure?" })];
    const trigger = mode === "long" ? "longPress" : mode;
    await finger("down", 800, "up");
    expect(log.filter((one) => one === "sure?" || one === trigger)).toEqual(["sure?", trigger]);
    [agrees, log] = [false, []];
    await finger("down", 800, "up");
    expect(log.filter((one) => one === "sure?" || one === trigger)).toEqual(["sure?"]);
  });

  it("releases only after the press has been answered", async () => {
    [targets, held] = [[button("pressRelease")], []];
    await finger("down", "up");
    expect(log).toEqual(["pressed", "press", "free"]);
    await answer(true);
    expect(log.at(-1)).toBe("release");
  });

  it("repeats not before the answer, and no more after a failure", async () => {
    [targets, held] = [[button("repeat")], []];
    await finger("down", 5000);
    expect(log).toEqual(["pressed", "repeat"]);
    await answer(true);
    await finger(300);
    await answer(false);
    await finger(5000);
    expect(log).toEqual(["pressed", "repeat", "repeat"]);
  });

  it("is refused without a connection, but for a link", async () => {
    isAllowed = false;
    targets = [button("click")];
    expect(presses.down(1, inside)).toBe(false);
    targets = [link];
    await finger("down", "up");
    expect(log).toEqual(["refused", "pressed", "free", "to p2"]);
  });

  it("presses nothing where nothing is near", () => {
    targets = [button("press")];
    expect([presses.down(1, outside), log]).toEqual([false, []]);
  });
});

describe("a switch", () => {
  beforeEach(() => (targets = [toggle()]));

  it("sends on and off in turn", async () => {
    await finger("down", "up", "down", "up");
    expect([log.filter((one) => one.startsWith("o")), shown()]).toEqual([["on", "off"], 0]);
  });

  it("shows its new state at once, and goes back when it did not arrive", async () => {
    held = [];
    await finger("down", "up");
    expect(shown()).toBe(1);
    await answer(false);
    expect(shown()).toBe(0);
  });

  it("stays as it is when the operator says no", async () => {
    [targets, agrees] = [[toggle("sure?")], false];
    await finger("down", "up");
    expect([log, shown()]).toEqual([["pressed", "free", "sure?"], 0]);
  });
});

describe("several fingers", () => {
  beforeEach(() => (targets = [button("pressRelease"), button("repeat", { id: 2, x: 400 })]));
  const other = at(410, 10);

  it("press several components, each for itself", async () => {
    await finger("down");
    presses.down(2, other);
    await finger("up", 300);
    presses.up(2, other);
    await finger(5000);
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
    await finger("up", 5000);
    expect(log).toEqual(["pressed", "press", "pressed 2", "repeat 2", "free", "free 2", "release"]);
    expect(presses.down(1, inside)).toBe(true);
  });
});

describe("a slider", () => {
  const sent = () => log.filter((one) => one.startsWith("position"));

  it.each([
    ["its rail", slider(), rail(3), 3],
    ["between two positions", slider(), rail(3.6), 4],
    ["before its rail", slider(), at(1, 40), 0],
    ["behind its rail", slider(), at(319, 40), 10],
    ["the rail of an upright one", slider({ vertical: true, width: 80, height: 316 }), at(40, 316 - 58 - 40), 2],
  ])("takes the position of a finger on %s", async (_, component, point, position) => {
    [targets, values] = [[component], new Map([[1, 7]])];
    presses.down(1, point);
    presses.up(1, point);
    await settled();
    expect([shown(), sent()]).toEqual([position, [`position${position}`]]);
  });

  it("sends the last position alone, and none where it began", async () => {
    targets = [slider()];
    for (const last of [6, 6]) {
      presses.down(1, rail(2));
      presses.move(1, rail(9));
      presses.up(1, rail(last));
      await settled();
    }
    expect(sent()).toEqual(["position6"]);
  });

  it.each([
    ["taken away", () => presses.cancel(1)],
    ["answered with a failure", () => presses.up(1, rail(8))],
  ])("goes back to where it was when it is %s", async (_, end) => {
    [targets, values, arrives] = [[slider()], new Map([[1, 4]]), false];
    presses.down(1, rail(8));
    end();
    await settled();
    expect(shown()).toBe(4);
  });

  it("sends while it is moved: the newest position once the last one has arrived", async () => {
    [targets, held] = [[slider({ live: true })], []];
    presses.down(1, rail(0));
    for (const position of [1, 2, 3]) presses.move(1, rail(position));
    expect(sent()).toEqual(["position1"]);
    await answer(true);
    expect(sent()).toEqual(["position1", "position3"]);
    presses.up(1, rail(5));
    await settled();
    expect(sent()).toEqual(["position1", "position3"]);
    await answer(true);
    expect(sent()).toEqual(["position1", "position3", "position5"]);
    await answer(false);
    expect(shown()).toBe(3);
  });

  it("that sends while it is moved goes back to what has arrived", async () => {
    targets = [slider({ live: true })];
    presses.down(1, rail(1));
    presses.move(1, rail(2));
    await settled();
    arrives = false;
    presses.move(1, rail(3));
    await settled();
    presses.cancel(1);
    expect([sent(), shown()]).toEqual([["position2", "position3"], 2]);
  });

  it("that asks sends at the end alone, and goes back when the operator says no", async () => {
    [targets, agrees] = [[slider({ live: true, confirm: "sure?" })], false];
    presses.down(1, rail(1));
    presses.move(1, rail(2));
    await settled();
    presses.up(1, rail(3));
    await settled();
    expect([log, shown()]).toEqual([["pressed", "free", "sure?"], 0]);
  });

  it.each([
    [3, 1, 4],
    [3, -10, 0],
    [3, 1000, 10],
  ])("at %i goes by %i to %i by key", async (before, by, after) => {
    values.set(1, before);
    presses.stepSlider(slider(), by);
    await settled();
    expect([shown(), sent()]).toEqual([after, [`position${after}`]]);
  });
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

  it("nothing is done without a connection", async () => {
    isAllowed = false;
    presses.activate(button("click"));
    presses.stepSlider(slider(), 1);
    await settled();
    expect([log, shown()]).toEqual([["refused", "refused"], 0]);
  });
});
