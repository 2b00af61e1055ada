import { describe, expect, it } from "vitest";
import { type Component, type ComponentType, componentTypes, emptyLook, newComponent } from "../../src/model/layout.ts";
import { readComponent } from "../../src/model/readLayout.ts";

const look = { text: "On", fill: "#0a6c76", color: "#ffffff80", border: "#000000", icon: "power", material: "m1" };
const activeLook = { ...look, text: "Off", material: "m2" };

/** What every kind has, in the order in which it is stored. */
const common = {
  name: "Main",
  x: -40,
  y: 25,
  width: 300,
  height: 90,
  locked: true,
  group: "g1",
  fontSize: 32.5,
  fontFamily: "mono",
  fontWeight: 700,
  radius: 0,
  style: "tile",
  align: "right",
  look,
};

/** What each kind has beyond that, in the order in which it is stored. */
const own: Record<ComponentType, object> = {
  button: { activeLook, mode: "long", confirm: "Sure?", confirmPage: "q1", interval: 50, hold: 2000 },
  switch: { activeLook, confirm: "Sure?", confirmPage: "q1" },
  slider: { confirm: "Sure?", confirmPage: "q1", steps: 5, min: -12.5, max: 6, vertical: true, live: true },
  text: {},
  image: { fit: "cover" },
  link: { target: "p2" },
  clock: { clock: "dateTime" },
  group: {},
  lamp: {},
  gauge: { min: -12.5, max: 6 },
};

/** A component as earlier versions stored it, which gave each kind the fields of all. */
const flat = (type: string) => ({ id: 7, type, ...common, ...(Object.assign({}, ...Object.values(own)) as object) });

const fresh = (type: ComponentType): Component => ({ ...newComponent(type, 0, 0), id: 7 });

describe.each(componentTypes)("a stored %s", (type) => {
  const stored = { id: 7, type, ...common, ...own[type] };

  it("is kept byte for byte", () => {
    expect(JSON.stringify(readComponent(stored))).toBe(JSON.stringify(stored));
  });

  it("loses what its kind doesn't have, and what no kind has", () => {
    expect(JSON.stringify(readComponent({ ...flat(type), colour: "red" }))).toBe(JSON.stringify(stored));
  });

  it("gets the fields that it lacks from a new one", () => {
    expect(readComponent({ id: 7, type })).toStrictEqual(fresh(type));
  });

  it.each([[null], [[]], [{}], [false], [NaN]])("gets a new one's fields in place of %j", (wrong) => {
    const fields = Object.keys(flat(type)).filter((key) => key !== "id" && key !== "type");
    const value = { id: 7, type, ...Object.fromEntries(fields.map((key) => [key, wrong])) };
    expect(readComponent(value)).toStrictEqual(fresh(type));
  });
});

it.each([
  ["a colour that is more than that", { type: "text", look: { fill: "red;background:url(x)" } }, { look: emptyLook }],
  ["sizes out of range", { type: "button", width: -5, height: 1e9, x: 0.6 }, { width: 8, height: 8000, x: 1 }],
  ["times out of range", { type: "button", interval: 1, hold: 1e9 }, { interval: 50, hold: 10_000 }],
  ["numbers out of range", { type: "slider", steps: 1, min: -1e9, max: 1e9 }, { steps: 2, min: -1e6, max: 1e6 }],
  ["fractions", { type: "slider", steps: 2.6, min: 0.5 }, { steps: 3, min: 0.5 }],
  ["text for a number, a number for text", { type: "slider", steps: "9", confirm: 5 }, { steps: 11, confirm: "" }],
  ["words that it doesn't know", { type: "button", mode: "never", align: "top" }, { mode: "click", align: "center" }],
  ["type that is not shipped", { type: "text", fontFamily: "x;y", fontWeight: 450 }, { fontFamily: "", fontWeight: 0 }],
  ["a form of another kind", { type: "image", fit: "time" }, { fit: "contain" }],
])("reads %s", (_, value, expected) => {
  expect(readComponent({ id: 1, ...value })).toMatchObject(expected);
});

it.each([
  ["an id that the server can't hold", { id: 2 ** 31, type: "button" }],
  ["an id that is no whole number", { id: 1.5, type: "button" }],
  ["an unknown type", { id: 1, type: "video" }],
  ["a name of every object as its type", { id: 1, type: "constructor" }],
  ["no object", [1, "button"]],
])("refuses %s", (_, value) => expect(readComponent(value)).toBeUndefined());
