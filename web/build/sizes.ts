import { gzipSync } from "node:zlib";
import type { Plugin } from "vite";

/** The module at which each entry starts; what all entries share counts for each of them. */
const entryModules: Record<string, string> = {
  panel: "/src/panel/start.ts",
  author: "/src/author/start.ts",
};

interface Chunk {
  type: "chunk";
  fileName: string;
  facadeModuleId: string | null;
  isEntry: boolean;
  code: string;
  imports: string[];
  dynamicImports: string[];
  viteMetadata?: { importedCss: Set<string> };
}

/** Fails the build when an entry, gzipped and with everything that it loads, weighs more than its limit. */
export function checkSizes(limits: Record<string, number>): Plugin {
  return {
    name: "check-sizes",
    apply: "build",
    enforce: "post",
    generateBundle(_options, bundle) {
      const files = bundle as unknown as Record<string, Chunk | { type: "asset"; source: string | Uint8Array }>;
      const chunks = Object.values(files).filter((file): file is Chunk => file.type === "chunk");
      const boot = chunks.find((chunk) => chunk.isEntry);
      const starts = new Set(Object.values(entryModules));
      const isStart = (chunk: Chunk) => [...starts].some((path) => chunk.facadeModuleId?.endsWith(path));

      const weight = (start: Chunk): number => {
        const seen = new Set<string>();
        const css = new Set<string>();
        const visit = (name: string, follow: boolean) => {
          const chunk = files[name];
          if (seen.has(name) || chunk?.type !== "chunk") return;
          seen.add(name);
          chunk.viteMetadata?.importedCss.forEach((file) => css.add(file));
          chunk.imports.forEach((next) => visit(next, follow));
          if (follow) {
            chunk.dynamicImports.forEach((next) => {
              const target = files[next];
              if (target?.type === "chunk" && !isStart(target)) visit(next, true);
            });
          }
        };
        if (boot) visit(boot.fileName, false);
        visit(start.fileName, true);
        let bytes = 0;
        for (const name of seen) bytes += gzipSync((files[name] as Chunk).code).length;
        for (const name of css) {
          const asset = files[name];
          if (asset?.type === "asset") bytes += gzipSync(asset.source).length;
        }
        return bytes;
      };

      for (const [name, limit] of Object.entries(limits)) {
        const start = chunks.find((chunk) => chunk.facadeModuleId?.endsWith(entryModules[name] ?? "?"));
        if (!start) this.error(`the entry ${name} is missing`);
        const bytes = weight(start);
        const text = `${name}: ${(bytes / 1000).toFixed(1)} kB gzipped, limit ${limit / 1000} kB`;
        if (bytes > limit) this.error(text);
        this.info(text);
      }
    },
  };
}
