import { readFileSync } from "node:fs";
import { join } from "node:path";
import type { Plugin } from "vite";
import type { LibraryIcon } from "../src/model/icons.ts";

const moduleId = "virtual:icons";
const folder = "node_modules/@tabler/icons";
const chosenFile = "src/author/icons/chosen.json";

/** An element of an icon, with its attributes; in this package each is a path. */
type Node = [element: string, attributes: { d?: string }];

/**
 * Makes the icon library: of the thousands of the package @tabler/icons, those of chosen.json, with their Chinese search
 * terms from there and the English ones of the package. The package's licence goes into the web root with them.
 */
export function iconLibrary(): Plugin {
  let root = "";
  const read = (file: string) => readFileSync(join(root, file), "utf8");
  return {
    name: "icon-library",
    configResolved(config) {
      root = config.root;
    },
    resolveId: (id) => (id === moduleId ? `\0${moduleId}` : undefined),
    load(id) {
      if (id !== `\0${moduleId}`) return undefined;
      const nodes = JSON.parse(read(`${folder}/tabler-nodes-outline.json`)) as Record<string, Node[] | undefined>;
      const about = JSON.parse(read(`${folder}/icons.json`)) as Record<
        string,
        { tags: (string | number)[] } | undefined
      >;
      const chosen = JSON.parse(read(chosenFile)) as Record<string, string>;
      const icons = Object.entries(chosen).map(([name, chinese]): LibraryIcon => {
        const paths = nodes[name]?.map(([, { d }]) => d);
        if (!paths?.every(Boolean)) throw new Error(`${chosenFile}: the package has no icon "${name}" of paths alone`);
        return { name, path: paths.join(""), english: (about[name]?.tags ?? []).join(" "), chinese };
      });
      return `export default ${JSON.stringify(icons)};`;
    },
    generateBundle() {
      this.emitFile({ type: "asset", fileName: "licences/tabler-icons.txt", source: read(`${folder}/LICENSE`) });
    },
  };
}
