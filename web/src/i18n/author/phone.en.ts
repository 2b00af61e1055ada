/** The second layout of a page, for phones, in English. The keys are those of every language. */
export const phoneEn = {
  phoneLayout: "Phone layout",
  wide: "Layout for large screens",
  addPhone: "Add a layout for phones",
  editPhone: "Edit the layout for phones",
  addPhoneHint: "A phone held upright shows the page with other places and sizes of its components.",
  arrangeAnew: "Arrange anew",
  removePhone: "Remove it",
  phoneHint:
    "Place, size and font size are those on phones. Everything else holds for both layouts; what you add or delete " +
    "here is added or deleted in both.",
  hideOnPhone: "Hide on phones",
  showOnPhone: "Show on phones",
  hiddenOnPhone: "Hidden on phones",
  ofPhone: "Phone layout: {0}",
};
