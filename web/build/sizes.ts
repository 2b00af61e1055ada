import { gzipSync } from "node:zlib";
import type { Plugin } from "vite";

/** How to recognise each entry among the files: the panel's bundle by its name, the author's by its first module. */
const entries = {
  panel: { asset: /^assets\/panel-/, module: "virtual:panel" },
  author: { asset: undefined, module: "/src/author/start.ts" },
};

type File =
  | { type: "asset"; fileName: string; source: string | Uint8Array }
  | {
      type: "chunk";
      fileName: string;
      facadeModuleId: string | null;
      isEntry: boolean;
      code: string;
      imports: string[];
      viteMetadata?: { importedCss: Set<string> };
    };

/**
 * Fails the build when an entry, gzipped and with everything that it loads at first, weighs more than its limit. What is
 * imported when it is needed does not count.
 */
export function checkSizes(limits: Record<keyof typeof entries, number>): Plugin {
  return {
    name: "check-sizes",
    apply: "build",
    enforce: "post",
    generateBundle(_options, bundle) {
      const files = bundle as unknown as Record<string, File>;
      const list = Object.values(files);
      const startsWith = (module: string) =>
        list.find((file) => file.type === "chunk" && file.facadeModuleId?.endsWith(module))?.fileName;

      /** The file and everything that it imports statically. */
      const closure = (name: string, found: Set<string>) => {
        const file = files[name];
        if (!file || found.has(name)) return;
        found.add(name);
        if (file.type !== "chunk") return;
        file.viteMetadata?.importedCss.forEach((css) => found.add(css));
        file.imports.forEach((next) => closure(next, found));
      };

      for (const [name, entry] of Object.entries(entries)) {
        const start = startsWith(entry.module);
        if (!start) this.error(`the entry ${name} is missing`);
        const found = new Set<string>();
        list.filter((file) => file.type === "chunk" && file.isEntry).forEach((file) => closure(file.fileName, found));
        closure(start, found);
        list.filter((file) => entry.asset?.test(file.fileName)).forEach((file) => found.add(file.fileName));
        const bytes = [...found].reduce((sum, one) => {
          const file = files[one]!;
          return sum + gzipSync(file.type === "chunk" ? file.code : file.source).length;
        }, 0);
        const limit = limits[name as keyof typeof entries];
        const text = `${name}: ${(bytes / 1000).toFixed(1)} kB gzipped, limit ${limit / 1000} kB`;
        if (bytes > limit) this.error(text);
        this.info(text);
      }
    },
  };
}
