import { readFileSync } from "node:fs";
import { join } from "node:path";
import type { Plugin } from "vite";

/** The packages from which fonts (src/view/fonts.css) or code is shipped, and the names of their licences. */
const packages = {
  "@fontsource-variable/inter": "inter",
  "@fontsource-variable/sofia-sans-condensed": "sofia-sans-condensed",
  "@fontsource-variable/jetbrains-mono": "jetbrains-mono",
  "@noble/hashes": "noble-hashes",
};

/** Puts the licences of what is shipped into the web root. */
export function licences(): Plugin {
  let root = "";
  return {
    name: "licences",
    configResolved(config) {
      root = config.root;
    },
    generateBundle() {
      for (const [name, file] of Object.entries(packages)) {
        const source = readFileSync(join(root, "node_modules", name, "LICENSE"), "utf8");
        this.emitFile({ type: "asset", fileName: `licences/${file}.txt`, source });
      }
    },
  };
}
