import { ta } from "../../i18n/author.ts";
import { type Component, newComponent, newPage, type Page } from "../../model/layout.ts";

/** A page with components of most kinds, on which a theme is shown; and the ids of those that are on. */
export function samplePage(): { page: Page; on: ReadonlySet<number> } {
  const row = { y: 108, width: 176, height: 96 };
  const title = { ...newComponent("text", 32, 28, ta("sampleRoom")), width: 330, fontSize: 30 };
  const clock = { ...newComponent("clock", 448, 24), width: 160, align: "right" as const };
  const buttons: Component[] = [
    { ...newComponent("button", 32, 0, ta("sampleStart")), ...row, style: "primary" },
    { ...newComponent("button", 232, 0, "HDMI 1"), ...row },
    { ...newComponent("button", 432, 0, ta("sampleOff")), ...row, style: "danger" },
  ];
  const lights = { ...newComponent("switch", 32, 228, ta("sampleLights")), width: 276 };
  const blinds = { ...newComponent("switch", 332, 228, ta("sampleBlinds")), width: 276 };
  const volume = { ...newComponent("slider", 32, 332, ta("sampleVolume")), width: 576, height: 92 };
  const components = [title, clock, ...buttons, lights, blinds, volume];
  return { page: { ...newPage("", 640, 448), components }, on: new Set([lights.id]) };
}
