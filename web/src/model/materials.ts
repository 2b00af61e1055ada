/** The materials document: pictures and icons as data URLs. */
import { type Layout, looksOf } from "./layout.ts";
import { asArray, asNumber, asObject, asText, isObject } from "./json.ts";
import { type Refusal } from "./readLayout.ts";

export const materialsVersion = 1;

/** Sizes in bytes above which the author is warned, and above which the picture is refused. */
export const materialSizes = { warning: 1_000_000, most: 8_000_000 };

export interface Material {
  readonly id: string;
  readonly name: string;
  /** In px; 0 when unknown (an SVG without a size). */
  readonly width: number;
  readonly height: number;
  /** In bytes, without the data URL's encoding. */
  readonly size: number;
  readonly data: string;
}

const imageData = /^data:image\/(png|jpeg|gif|webp|svg\+xml|avif|bmp|x-icon|vnd\.microsoft\.icon);base64,/;

/** Whether it is a picture that may be shown: only a data URL of an image type. */
export function isImageData(data: string): boolean {
  return imageData.test(data);
}

/**
 * The list of a stored document, without materials whose id is taken already. The server's own first document contains
 * only an empty list.
 */
export function readMaterials(value: unknown): readonly Material[] | Refusal {
  const document = asObject(value);
  const version = asNumber(document["version"], 0, 0, Number.MAX_SAFE_INTEGER);
  if (version > materialsVersion) return { refused: "newer", version };
  const list = asArray(document["materialList"]);
  const ids = new Set<string>();
  const materials = list.flatMap((one) => {
    const material = readMaterial(one);
    if (!material || ids.has(material.id)) return [];
    ids.add(material.id);
    return [material];
  });
  if (materials.length === 0 && list.length > 0 && version === 0) return { refused: "foreign" };
  return materials;
}

export function writeMaterials(materials: readonly Material[]): object {
  return { version: materialsVersion, materialList: materials };
}

export function readMaterial(value: unknown): Material | undefined {
  if (!isObject(value)) return undefined;
  const id = asText(value["id"]);
  const data = asText(value["data"]);
  if (!id || !isImageData(data)) return undefined;
  return {
    id,
    data,
    name: asText(value["name"]) || id,
    width: asNumber(value["width"], 0, 0, 100_000),
    height: asNumber(value["height"], 0, 0, 100_000),
    size: asNumber(value["size"], dataSize(data), 0, Number.MAX_SAFE_INTEGER),
  };
}

/** Number of bytes in a data URL in base64. */
export function dataSize(data: string): number {
  const text = data.slice(data.indexOf(",") + 1);
  const padding = text.endsWith("==") ? 2 : text.endsWith("=") ? 1 : 0;
  return Math.max(0, (text.length * 3) / 4 - padding);
}

/** How often each material is used, by its id: the theme, page backgrounds and both looks of components, also in own blocks. */
export function materialUses(layout: Layout): Map<string, number> {
  const uses = new Map<string, number>();
  const count = (id: string) => id && uses.set(id, (uses.get(id) ?? 0) + 1);
  count(layout.theme?.material ?? "");
  for (const page of layout.pages) {
    count(page.material);
    for (const look of page.components.flatMap(looksOf)) count(look.material);
  }
  for (const block of layout.blocks ?? []) {
    for (const look of block.components.flatMap(looksOf)) count(look.material);
  }
  return uses;
}
