/** What the keyboard does in the editor: one table, for doing it and for the list that "?" shows. */
import type { Editor } from "./editor.svelte.ts";

export interface KeyRow {
  /** As shown; several rows may lead to one action. */
  readonly keys: string;
  readonly label:
    | "keyUndo"
    | "keyRedo"
    | "keyAll"
    | "keyDuplicate"
    | "keyCopy"
    | "keyCut"
    | "keyPaste"
    | "keyDelete"
    | "keyNudge"
    | "keyNudgeFar"
    | "keyNext"
    | "keyText"
    | "keyMenu"
    | "keyGroup"
    | "keyUngroup"
    | "keyLock"
    | "keyForward"
    | "keyBackward"
    | "keyFront"
    | "keyBack"
    | "keyZoomIn"
    | "keyZoomOut"
    | "keyFit"
    | "keyZoomWhole"
    | "keyNone"
    | "keyHelp"
    | "keySave"
    | "keyFind"
    | "keyPan"
    | "keyWheel"
    | "keyDraw"
    | "keyCopyDrag"
    | "keyNoSnap"
    | "keyAxis"
    | "keyResize"
    | "keyAlign"
    | "keySpread";
  readonly matches?: (event: KeyboardEvent, ctrl: boolean) => boolean;
  readonly run?: (editor: Editor, event: KeyboardEvent) => void;
}

const plain = (key: string) => (event: KeyboardEvent, ctrl: boolean) =>
  !ctrl && !event.altKey && event.key.toLowerCase() === key;
const withCtrl =
  (key: string, shift = false) =>
  (event: KeyboardEvent, ctrl: boolean) =>
    ctrl && event.shiftKey === shift && event.key.toLowerCase() === key;

const steps: Record<string, readonly [number, number]> = {
  ArrowLeft: [-1, 0],
  ArrowRight: [1, 0],
  ArrowUp: [0, -1],
  ArrowDown: [0, 1],
};

function arrow(event: KeyboardEvent): readonly [number, number] {
  return steps[event.key] ?? [0, 0];
}

const isArrow = (event: KeyboardEvent) => event.key in steps;

const alignments = { l: "left", c: "center", r: "right", t: "top", m: "middle", b: "bottom" } as const;
const alignment = (event: KeyboardEvent) =>
  alignments[event.code.replace("Key", "").toLowerCase() as keyof typeof alignments];

export const keyRows: readonly KeyRow[] = [
  { keys: "Ctrl Z", label: "keyUndo" },
  { keys: "Ctrl Y, Ctrl Shift Z", label: "keyRedo" },
  { keys: "Ctrl S", label: "keySave" },
  { keys: "Ctrl F", label: "keyFind" },
  { keys: "Ctrl C", label: "keyCopy" },
  { keys: "Ctrl X", label: "keyCut" },
  { keys: "Ctrl V", label: "keyPaste" },
  { keys: "Ctrl D", label: "keyDuplicate", matches: withCtrl("d"), run: (editor) => editor.duplicate() },
  {
    keys: "Delete",
    label: "keyDelete",
    matches: (event) => event.key === "Delete" || event.key === "Backspace",
    run: (editor) => editor.remove(),
  },
  { keys: "Ctrl A", label: "keyAll", matches: withCtrl("a"), run: (editor) => editor.selectAll() },
  {
    keys: "Esc",
    label: "keyNone",
    matches: plain("escape"),
    run: (editor) => {
      editor.armed = undefined;
      editor.select([]);
    },
  },
  { keys: "Enter", label: "keyText", matches: plain("enter"), run: (editor) => editor.startWriting() },
  { keys: "Shift F10", label: "keyMenu" },
  {
    keys: "N, Shift N",
    label: "keyNext",
    matches: plain("n"),
    run: (editor, event) => editor.selectNext(event.shiftKey ? -1 : 1),
  },
  {
    keys: "← → ↑ ↓",
    label: "keyNudge",
    matches: (event, ctrl) => isArrow(event) && !ctrl && !event.altKey && !event.shiftKey,
    run: (editor, event) => editor.nudge(...arrow(event)),
  },
  {
    keys: "Shift ← → ↑ ↓",
    label: "keyNudgeFar",
    matches: (event, ctrl) => isArrow(event) && !ctrl && !event.altKey && event.shiftKey,
    run: (editor, event) => {
      const [x, y] = arrow(event);
      editor.nudge(x * editor.grid, y * editor.grid);
    },
  },
  {
    keys: "Ctrl ← → ↑ ↓",
    label: "keyResize",
    matches: (event, ctrl) => isArrow(event) && ctrl,
    run: (editor, event) => {
      const [x, y] = arrow(event);
      const by = event.shiftKey ? editor.grid : 1;
      editor.changeSelected(
        (one) =>
          one.locked
            ? one
            : { ...one, width: Math.max(8, one.width + x * by), height: Math.max(8, one.height + y * by) },
        "resize",
      );
    },
  },
  {
    keys: "Alt L C R T M B",
    label: "keyAlign",
    matches: (event, ctrl) => event.altKey && !ctrl && alignment(event) !== undefined,
    run: (editor, event) => editor.align(alignment(event)),
  },
  {
    keys: "Alt H, Alt V",
    label: "keySpread",
    matches: (event, ctrl) => event.altKey && !ctrl && (event.code === "KeyH" || event.code === "KeyV"),
    run: (editor, event) => editor.distribute(event.code === "KeyH" ? "x" : "y"),
  },
  { keys: "Ctrl G", label: "keyGroup", matches: withCtrl("g"), run: (editor) => editor.group() },
  { keys: "Ctrl Shift G", label: "keyUngroup", matches: withCtrl("g", true), run: (editor) => editor.ungroup() },
  { keys: "L", label: "keyLock", matches: plain("l"), run: (editor) => editor.toggleLock() },
  { keys: "]", label: "keyForward", matches: plain("]"), run: (editor) => editor.order("forward") },
  { keys: "[", label: "keyBackward", matches: plain("["), run: (editor) => editor.order("backward") },
  { keys: "Shift ]", label: "keyFront", matches: plain("}"), run: (editor) => editor.order("front") },
  { keys: "Shift [", label: "keyBack", matches: plain("{"), run: (editor) => editor.order("back") },
  {
    keys: "+",
    label: "keyZoomIn",
    matches: (event, ctrl) => !ctrl && (event.key === "+" || event.key === "="),
    run: (editor) => editor.zoomTo(editor.zoom * 1.25),
  },
  { keys: "-", label: "keyZoomOut", matches: plain("-"), run: (editor) => editor.zoomTo(editor.zoom / 1.25) },
  { keys: "0", label: "keyFit", matches: plain("0"), run: (editor) => editor.fit() },
  { keys: "1", label: "keyZoomWhole", matches: plain("1"), run: (editor) => editor.zoomTo(1) },
  { keys: "␣ + drag", label: "keyPan" },
  { keys: "Ctrl + wheel", label: "keyWheel" },
  { keys: "Shift + click", label: "keyDraw" },
  { keys: "Alt + drag", label: "keyCopyDrag" },
  { keys: "Ctrl + drag", label: "keyNoSnap" },
  { keys: "Shift + drag", label: "keyAxis" },
  { keys: "?", label: "keyHelp" },
];

/** Does what the key stands for. True when it stands for something. */
export function pressKey(editor: Editor, event: KeyboardEvent): boolean {
  const row = keyRows.find((one) => one.matches?.(event, event.ctrlKey || event.metaKey));
  row?.run?.(editor, event);
  return row !== undefined;
}
