/** The icon library, see build/iconLibrary.ts. Large: only to be loaded when needed. */
declare module "virtual:icons" {
  const icons: readonly import("../../model/icons.ts").LibraryIcon[];
  export default icons;
}
