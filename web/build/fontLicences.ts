import { readFileSync } from "node:fs";
import { join } from "node:path";
import type { Plugin } from "vite";

/** The packages whose fonts src/view/fonts.css ships. */
const packages = ["inter", "sofia-sans-condensed", "jetbrains-mono"];

/** Puts the licences of the fonts into the web root, beside the fonts. */
export function fontLicences(): Plugin {
  let root = "";
  return {
    name: "font-licences",
    configResolved(config) {
      root = config.root;
    },
    generateBundle() {
      for (const name of packages) {
        const source = readFileSync(join(root, `node_modules/@fontsource-variable/${name}/LICENSE`), "utf8");
        this.emitFile({ type: "asset", fileName: `licences/${name}.txt`, source });
      }
    },
  };
}
