import { expect, it } from "vitest";
import { fieldsOf, meaningOf } from "../../src/author/commands/commandForm.ts";
import { bytesToVisible, contentToBytes, isFault } from "../../src/model/content.ts";
import { expandTemplate, middlePosition, sliderTrigger } from "../../src/model/interactions.ts";
import { newComponent } from "../../src/model/layout.ts";
import { command } from "../support/projects.ts";

const scale = (min: number, max: number) => ({ ...newComponent("slider", 0, 0), steps: 3, min, max });

it.each([
  ["VOL {value:3}\r", 0, scale(0, 100), "VOL 050·"],
  ["VOL {value:2} {value:5} {value}", 0, scale(0, 100), "VOL 50 00050 50"],
  ["T{value:2} {value}", 0, scale(-11, 3.4), "T-04 -3.8"],
  ["41 {value} {value:3}", 1, scale(100, 144), "Azz"],
])("the preview of %j (format %i) shows the bytes that are stored", (content, contentFormat, slider, shown) => {
  const template = { ...command(1, content), contentFormat };
  const meaning = meaningOf(fieldsOf(template), slider);
  const stored = expandTemplate(slider, [template]).triggers[sliderTrigger(middlePosition(slider))]![0]!.content;
  if (isFault(meaning)) throw new Error(meaning.fault);
  expect(meaning.content).toBe(content);
  expect(bytesToVisible(meaning.bytes)).toBe(shown);
  expect(meaning.bytes).toEqual(contentToBytes(stored, contentFormat, 0));
});
