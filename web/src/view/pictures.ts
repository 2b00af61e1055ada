/** Materials as addresses for images: a data URL is unpacked once, however often it is shown. */
import type { Material } from "../model/materials.ts";

export type Pictures = ReadonlyMap<string, string>;

/** The addresses by material id. Those of unchanged materials stay, the others are released. */
export class PictureStore {
  #known = new Map<string, { data: string; url: string }>();

  update(materials: readonly Material[]): Pictures {
    const next = new Map<string, { data: string; url: string }>();
    for (const { id, data } of materials) {
      const known = this.#known.get(id);
      next.set(id, known?.data === data ? known : { data, url: URL.createObjectURL(toBlob(data)) });
    }
    for (const [id, { url }] of this.#known) {
      if (next.get(id)?.url !== url) URL.revokeObjectURL(url);
    }
    this.#known = next;
    return new Map([...next].map(([id, { url }]) => [id, url]));
  }
}

function toBlob(data: string): Blob {
  const comma = data.indexOf(",");
  const type = /^data:([^;,]*)/.exec(data)?.[1] ?? "";
  const bytes = Uint8Array.from(atob(data.slice(comma + 1)), (character) => character.charCodeAt(0));
  return new Blob([bytes], { type });
}
