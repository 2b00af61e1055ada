import { ta } from "../../i18n/author.ts";
import { type Material, materialSizes } from "../../model/materials.ts";
import type { Application } from "../application.ts";
import { ImageFault, readImage, sizeText } from "./images.ts";

/** Adds files to the materials, or replaces one by the first of them. Reports unusable files. */
export async function addFiles(
  { store, notices }: Application,
  files: Iterable<File>,
  replaced?: Material,
): Promise<Material[]> {
  const added: Material[] = [];
  for (const file of files) {
    try {
      const material = await readImage(file);
      added.push(replaced ? { ...material, id: replaced.id, name: replaced.name } : material);
      if (material.size > materialSizes.warning) {
        notices.tell("plain", ta("largeMaterial", material.name, sizeText(material.size)));
      }
    } catch (error) {
      const key = error instanceof ImageFault ? error.key : "notReadable";
      notices.tell("bad", ta(key, file.name));
    }
    if (replaced) break;
  }
  if (added.length === 0) return added;
  const { project } = store;
  const materials = replaced
    ? project.materials.map((one) => (one.id === replaced.id ? (added[0] ?? one) : one))
    : [...project.materials, ...added];
  store.endStep();
  store.change({ ...project, materials });
  return added;
}
