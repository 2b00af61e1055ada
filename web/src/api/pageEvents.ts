/** What befalls the page from outside. */

/** The page is looked at again after it was hidden; the machine has a network again; it has none any more. */
export type PageEvent = "shown" | "online" | "offline";

export interface PageEvents {
  /** Calls each time, as long as the page lives. */
  on(event: PageEvent, act: () => void): void;
}

export const browserEvents: PageEvents = {
  on(event, act) {
    if (event !== "shown") addEventListener(event, act);
    else document.addEventListener("visibilitychange", () => document.visibilityState === "visible" && act());
  },
};
