/** The panel, bundled by itself; see build/panelBundle.ts. */
declare module "virtual:panel" {
  export const start: typeof import("./panel/start.ts").start;
}
