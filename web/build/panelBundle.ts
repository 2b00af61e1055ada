import { svelte } from "@sveltejs/vite-plugin-svelte";
import { build, type Plugin, type Rolldown } from "vite";

/** The module that loads the panel; main.ts imports it. */
const moduleId = "virtual:panel";
const entry = "/src/panel/start.ts";

/** Imports a module without fetching its style beforehand: the panel has one for everything. Saves 1 kB. */
const plainImports: Plugin = {
  name: "plain-imports",
  enforce: "pre",
  load: (id) => (id.endsWith("vite/preload-helper.js") ? "export const __vitePreload = (load) => load();" : undefined),
};

/**
 * Bundles the panel by itself (docs/decisions/0008-two-bundles-without-a-router.md). In a common bundle the panel would
 * load every piece of the framework that only the author's part needs: a bundler divides code by module, and keeps a
 * module that two entries share whole.
 */
export function panelBundle(): Plugin {
  let isBuild = false;
  let root = "";
  let target: string | string[] | false = false;
  return {
    name: "panel-bundle",
    configResolved(config) {
      isBuild = config.command === "build";
      root = config.root;
      target = config.build.target;
    },
    resolveId: (id) => (id === moduleId ? `\0${moduleId}` : undefined),
    async load(id) {
      if (id !== `\0${moduleId}`) return undefined;
      if (!isBuild) return `export { start } from "${entry}";`;
      const result = (await build({
        configFile: false,
        root,
        base: "./",
        logLevel: "warn",
        publicDir: false,
        plugins: [svelte(), plainImports],
        build: {
          write: false,
          target,
          modulePreload: false,
          cssCodeSplit: false,
          assetsInlineLimit: 0,
          rolldownOptions: {
            input: root + entry,
            preserveEntrySignatures: "allow-extension",
            output: {
              entryFileNames: "assets/panel-[hash].js",
              // Fonts come when a page shows them, and are not counted among what the panel loads at first.
              assetFileNames: ({ names }) =>
                `assets/${names.some((name) => name.endsWith(".woff2")) ? "[name]" : "panel"}-[hash][extname]`,
              // What is loaded when a page needs it.
              chunkFileNames: "assets/later-panel-[hash].js",
            },
          },
        },
      })) as Rolldown.RolldownOutput;
      if (result.output[0].imports.length) this.error("the panel loads several files at first; only one is counted");
      const names = result.output.map((file) => {
        this.emitFile({
          type: "asset",
          fileName: file.fileName,
          source: file.type === "chunk" ? file.code : file.source,
        });
        return file.fileName;
      });
      const beside = (ending: string) =>
        JSON.stringify(
          `./${names.find((name) => name.startsWith("assets/panel-") && name.endsWith(ending))!.replace("assets/", "")}`,
        );
      return `
        const address = (name) => new URL(name, import.meta.url).href;
        const style = document.createElement("link");
        Object.assign(style, { rel: "stylesheet", href: address(${beside(".css")}) });
        const shown = new Promise((resolve) => (style.onload = style.onerror = resolve));
        document.head.append(style);
        export const { start } = await import(/* @vite-ignore */ address(${beside(".js")}));
        await shown;`;
    },
  };
}
