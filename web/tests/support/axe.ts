import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import type { run } from "axe-core";
import type { Page } from "playwright-core";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** What axe finds on a page, from moderate on up. */
export async function axeFindings(page: Page): Promise<string[]> {
  await page.addScriptTag({ content: axe });
  const { violations } = await page.evaluate(() => (window as unknown as { axe: { run: typeof run } }).axe.run());
  return violations
    .filter(({ impact }) => impact !== "minor")
    .map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(" | ")}`);
}
