/** Arrow keys for tabs and radio groups: one place of the Tab key for all of them, as native radio buttons have it. */
import type { Attachment } from "svelte/attachments";

/** What the arrow keys lead along. The names are those of the ARIA roles. */
export type GroupRole = "tablist" | "radiogroup";

/** Tabs lie in a row, so that the vertical arrows stay free; radio buttons take all four. */
const steps: Record<GroupRole, Record<string, number>> = {
  tablist: { ArrowLeft: -1, ArrowRight: 1 },
  radiogroup: { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -1, ArrowDown: 1 },
};
const members: Record<GroupRole, string> = { tablist: "[role=tab]", radiogroup: "[role=radio]" };

/**
 * Where a key leads from a place in a group of so many: the ends of the group follow one another.
 * @returns undefined for a key that leads nowhere
 */
export function placeAfter(key: string, role: GroupRole, place: number, count: number): number | undefined {
  if (key === "Home") return 0;
  if (key === "End") return count - 1;
  const step = steps[role][key];
  return step === undefined ? undefined : (place + step + count) % count;
}

/**
 * Lets the arrow keys, Home and End move the focus within the element and choose what it comes to, with a click. The
 * members bear the roles, and `tabindex` 0 on the chosen one, -1 on the others.
 */
export function arrowKeys(role: GroupRole): Attachment<HTMLElement> {
  return (group) => {
    const press = (event: KeyboardEvent) => {
      if (event.ctrlKey || event.altKey || event.metaKey || event.shiftKey) return;
      const all = [...group.querySelectorAll<HTMLElement>(members[role])];
      const from = all.findIndex((one) => one === event.target);
      const to = from < 0 ? undefined : placeAfter(event.key, role, from, all.length);
      if (to === undefined) return;
      event.preventDefault();
      all[to]!.focus();
      all[to]!.click();
    };
    group.addEventListener("keydown", press);
    return () => group.removeEventListener("keydown", press);
  };
}
