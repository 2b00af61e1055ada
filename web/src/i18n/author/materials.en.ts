/** Materials, in English. The keys are those of every language. */
export const materialsEn = {
  noMaterials: "No material yet",
  noMaterialsHint:
    "Drop images and icons here, or choose them. They are stored with the pages, so that panels need nothing else.",
  addMaterial: "Add images",
  materialsHint: "PNG, JPEG, SVG, WebP or GIF, at most 8 MB each. Drop files anywhere on this screen.",
  replace: "Replace",
  scaleDown: "Scale down",
  scaleHint: "It has {0} × {1} px and {2}. Choose the length of the longer side; the material is replaced everywhere.",
  scaledTo: "Scaled down to {0} × {1} px, {2}.",
  notSmaller: "That would not make it smaller, so it stays as it is.",
  isLarge: "Large: panels take long to load it.",
  largeMaterial: "{0} is large ({1}). Scale it down, so that panels load fast.",
  notImage: "{0} is no image that browsers show.",
  tooLarge: "{0} is larger than 8 MB and was not added. Scale it down first.",
  notReadable: "{0} can't be read. Check that it is still there, and that you may open it.",
  deleteMaterial: "Delete {0}?",
  deleteMaterialUsed: "It is used in {0} {0|place. That is listed as a problem.|places. They are listed as problems.}",
};
