/** The sizes that a new page is offered in; any other can be typed. */
export const pageSizes = [
  { key: "sizeTablet", width: 1280, height: 800 },
  { key: "sizeHd", width: 1920, height: 1080 },
  { key: "sizePhone", width: 390, height: 844 },
] as const;
