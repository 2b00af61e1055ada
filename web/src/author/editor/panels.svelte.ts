/** Which of the panels beside the page are shown; this browser remembers it. */
export type Side = "left" | "right";

const key = "hiddenPanels";

export class Panels {
  #hidden = $state.raw<ReadonlySet<string>>(new Set());

  constructor(readonly storage: Pick<Storage, "getItem" | "setItem">) {
    this.#hidden = new Set((storage.getItem(key) ?? "").split(" ").filter(Boolean));
  }

  isShown(side: Side): boolean {
    return !this.#hidden.has(side);
  }

  toggle(side: Side): void {
    const hidden = new Set(this.#hidden);
    if (!hidden.delete(side)) hidden.add(side);
    this.#hidden = hidden;
    this.storage.setItem(key, [...hidden].join(" "));
  }
}
