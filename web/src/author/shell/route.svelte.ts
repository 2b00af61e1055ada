import { hashParts } from "../../model/address.ts";

/** The shown screen, from the address after the hash (docs/decisions/0008-two-bundles-without-a-router.md). */
export const screens = ["pages", "versions", "interfaces", "materials", "settings", "edit"] as const;
export type Screen = (typeof screens)[number];

export class Route {
  /** A component that the editor selects when it opens; 0: none. */
  awaited = 0;
  #parts = $state.raw(parse());

  constructor() {
    addEventListener("hashchange", () => (this.#parts = parse()));
  }

  get screen(): Screen {
    return screens.find((screen) => screen === this.#parts[0]) ?? "pages";
  }

  /** The part after the screen's name: the id of the edited page. */
  get id(): string {
    return this.#parts[1] ?? "";
  }

  go(screen: Screen, id = ""): void {
    location.hash = id ? `#/${screen}/${id}` : `#/${screen}`;
  }
}

function parse(): string[] {
  return hashParts(location.hash);
}
