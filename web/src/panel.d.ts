/** The panel, bundled by itself; see build/panelBundle.ts. */
declare module "virtual:panel" {
  export function start(place: HTMLElement): void;
}
