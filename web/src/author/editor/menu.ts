/** What the menu of the canvas offers for the selection. */
import { ta } from "../../i18n/author.ts";
import type { Point } from "../../model/geometry.ts";
import { alignmentIcons } from "./alignmentIcons.ts";
import type { Editor } from "./editor.svelte.ts";
import { setHidden } from "./phone.ts";

export interface MenuItem {
  readonly label: string;
  readonly run: () => void;
  /** A line above it parts it from what stands before. */
  readonly isFirst?: boolean;
}

/**
 * @param at  where the menu was opened, in px of the page: there the clipboard is pasted
 * @param saveBlock  asks for the name under which the selection is kept as a block
 */
export function menuOf(editor: Editor, at: Point, saveBlock: () => void): MenuItem[] {
  const paste = editor.canPaste ? [{ label: ta("pasteHere"), run: () => void editor.paste("", at) }] : [];
  if (editor.selected.length === 0) return [...paste, { label: ta("keyAll"), run: () => editor.selectAll() }];
  const orders = ["front", "forward", "backward", "back"] as const;
  const words = { front: "keyFront", forward: "keyForward", backward: "keyBackward", back: "keyBack" } as const;
  const isLocked = editor.selected.every((one) => one.locked);
  const aligned = alignmentIcons.map(([alignment], index) => ({
    label: ta("alignTo", ta(`align_${alignment}`)),
    run: () => editor.align(alignment),
    isFirst: index === 0,
  }));
  const spread = (["x", "y"] as const).map((axis) => ({
    label: ta(axis === "x" ? "spreadX" : "spreadY"),
    run: () => editor.distribute(axis),
  }));
  return [
    ...(editor.canWrite ? [{ label: ta("keyText"), run: () => editor.startWriting() }] : []),
    { label: ta("keyCut"), run: () => void editor.cut(false) },
    { label: ta("keyCopy"), run: () => void editor.copy(false) },
    ...paste,
    { label: ta("keyDuplicate"), run: () => editor.duplicate() },
    { label: ta("saveBlock"), run: saveBlock },
    { label: ta("keyDelete"), run: () => editor.remove() },
    ...(editor.isOnPhone ? [{ label: ta("hideOnPhone"), run: () => setHidden(editor, editor.selection, true) }] : []),
    ...orders.map((order, index) => ({
      label: ta(words[order]),
      run: () => editor.order(order),
      isFirst: index === 0,
    })),
    { label: ta(isLocked ? "unlock" : "lock"), run: () => editor.toggleLock(), isFirst: true },
    ...(editor.movable.length > 1 ? aligned : []),
    ...(editor.movable.length > 2 ? spread : []),
  ];
}
