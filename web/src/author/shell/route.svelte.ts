import { hashParts } from "../../model/address.ts";

/** The shown screen, from the address after the hash (docs/decisions/0008-two-bundles-without-a-router.md). */
export const screens = ["pages", "versions", "interfaces", "materials", "settings", "edit"] as const;
export type Screen = (typeof screens)[number];

/** What a link of a list leads to. */
export interface Lead {
  /** 0: the page itself. */
  readonly componentId: number;
  /** Whether it is shown in the layout for phones; without it, in the layout that is shown. */
  readonly isOnPhone?: boolean | undefined;
  /** What the inspector shows of it; without it what the author has chosen. */
  readonly tab?: "look" | "commands" | undefined;
  /** Whose commands are shown. */
  readonly trigger?: string | undefined;
}

export class Route {
  /** What the editor selects and shows when it opens. */
  awaited: Lead | undefined;
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
