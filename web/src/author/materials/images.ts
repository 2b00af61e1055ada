/** Converts files to materials: reads, measures and scales down pictures. */
import { newId } from "../../model/ids.ts";
import { dataSize, isImageData, type Material, materialSizes } from "../../model/materials.ts";

/** Why a file can't become a material: keys of the sentences that say so. */
export class ImageFault extends Error {
  constructor(readonly key: "notImage" | "tooLarge" | "notReadable") {
    super(key);
  }
}

/** @throws ImageFault */
export async function readImage(file: File): Promise<Material> {
  if (!file.type.startsWith("image/")) throw new ImageFault("notImage");
  if (file.size > materialSizes.most) throw new ImageFault("tooLarge");
  const data = await new Promise<string>((resolve, reject) => {
    const reader = new FileReader();
    reader.onload = () => resolve(reader.result as string);
    reader.onerror = () => reject(new ImageFault("notReadable"));
    reader.readAsDataURL(file);
  });
  if (!isImageData(data)) throw new ImageFault("notImage");
  const image = await load(data);
  const name = file.name.replace(/\.[^.]*$/, "") || file.name;
  return { id: newId("m"), name, width: image.naturalWidth, height: image.naturalHeight, size: file.size, data };
}

function load(data: string): Promise<HTMLImageElement> {
  return new Promise((resolve, reject) => {
    const image = new Image();
    image.onload = () => resolve(image);
    image.onerror = () => reject(new ImageFault("notReadable"));
    image.src = data;
  });
}

/** Longest sides that are offered for scaling down, in px. */
export const scaledSides = [128, 256, 512, 1024, 1920];

/**
 * The picture, scaled down so that its longer side is at most this long. Transparency is kept. If the result is not
 * smaller in bytes than the original, the original stays.
 */
export async function scaledDown(material: Material, side: number): Promise<Material> {
  const image = await load(material.data);
  const scale = Math.min(1, side / Math.max(image.naturalWidth, image.naturalHeight));
  const width = Math.max(1, Math.round(image.naturalWidth * scale));
  const height = Math.max(1, Math.round(image.naturalHeight * scale));
  const canvas = document.createElement("canvas");
  canvas.width = width;
  canvas.height = height;
  canvas.getContext("2d")?.drawImage(image, 0, 0, width, height);
  const asWebp = canvas.toDataURL("image/webp", 0.9);
  const data = asWebp.startsWith("data:image/webp") ? asWebp : canvas.toDataURL("image/png");
  const size = dataSize(data);
  return size < material.size ? { ...material, data, width, height, size } : material;
}

export function sizeText(bytes: number): string {
  return bytes < 1_000_000 ? `${Math.max(1, Math.round(bytes / 1000))} kB` : `${(bytes / 1_000_000).toFixed(1)} MB`;
}
