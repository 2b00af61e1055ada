import { readdir, readFile, writeFile } from "node:fs/promises";
import { join } from "node:path";
import { promisify } from "node:util";
import { brotliCompress, constants, gzip } from "node:zlib";
import type { Plugin } from "vite";

const compressible = /\.(js|css|html|svg|json)$/;
const leastBytes = 1024;

/** Writes a .gz and a .br beside each file that is worth it; the server selects what the browser accepts. */
export function precompress(): Plugin {
  let folder = "";
  return {
    name: "precompress",
    apply: "build",
    configResolved(config) {
      folder = join(config.root, config.build.outDir);
      if (config.build.outDir.startsWith("/")) folder = config.build.outDir;
    },
    async closeBundle(error?: Error) {
      if (error) return;
      const names = await readdir(folder, { recursive: true });
      await Promise.all(
        names
          .filter((name) => compressible.test(name))
          .map(async (name) => {
            const path = join(folder, name);
            const data = await readFile(path);
            if (data.length < leastBytes) return;
            const quality = { params: { [constants.BROTLI_PARAM_QUALITY]: constants.BROTLI_MAX_QUALITY } };
            await writeFile(`${path}.gz`, await promisify(gzip)(data, { level: 9 }));
            await writeFile(`${path}.br`, await promisify(brotliCompress)(data, quality));
          }),
      );
    },
  };
}
