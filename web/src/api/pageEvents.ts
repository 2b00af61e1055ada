/** Events from outside the page. */

/** The page becomes visible again; the machine has a network again; it has none any more. */
export type PageEvent = "shown" | "online" | "offline";

export interface PageEvents {
  /** Calls each time, as long as the page exists. */
  on(event: PageEvent, act: () => void): void;
  /** Whether the page is visible now. */
  isShown(): boolean;
}

export const browserEvents: PageEvents = {
  on(event, act) {
    if (event !== "shown") addEventListener(event, act);
    else document.addEventListener("visibilitychange", () => document.visibilityState === "visible" && act());
  },
  isShown: () => document.visibilityState === "visible",
};
