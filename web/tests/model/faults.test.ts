import { expect, it } from "vitest";
import { faultMarks } from "../../src/author/shell/faults.ts";

it.each([
  ["nothing is wrong", undefined, undefined, undefined, undefined],
  ["nothing is wrong any more", "", "hint", undefined, "hint"],
  ["something is wrong", "Too large.", undefined, true, "fault"],
  ["something is wrong, beside a hint", "Too large.", "hint", true, "hint fault"],
] as const)("a field where %s", (_, fault, hint, invalid, described) => {
  expect(faultMarks("fault", fault, hint)).toEqual({ "aria-invalid": invalid, "aria-describedby": described });
});
