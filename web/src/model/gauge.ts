import type { GaugeComponent } from "./layout.ts";

/** How far a gauge is filled, from 0 to 1; without a number not at all. It may run downwards: from 100 to 0. */
export function gaugeShare({ min, max }: Pick<GaugeComponent, "min" | "max">, level: number | undefined): number {
  if (level === undefined || min === max) return 0;
  return Math.min(1, Math.max(0, (level - min) / (max - min)));
}
