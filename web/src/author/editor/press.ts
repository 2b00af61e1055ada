/** A press on the canvas, from the time that the pointer goes down: a click, or a drag once it has moved. */
import { contains, type Handle, type Point } from "../../model/geometry.ts";
import { type Drag, drawDrag, marqueeDrag, moveDrag, resizeDrag } from "./drags.ts";
import type { Editor } from "./editor.svelte.ts";
import { placeOf } from "./viewGestures.ts";

/** How far a finger or a mouse may tremble before a press counts as a drag, in px of the screen. */
const trembling = 4;

interface Meaning {
  drag: () => Drag;
  click: () => void;
}

/** What a press stands for: at a handle, on the page beside the components, or on a component. Selects what it hits. */
function meaningOf(editor: Editor, event: PointerEvent): Meaning {
  const at = editor.toPage(placeOf(event));
  const { armed } = editor;
  if (armed) return { drag: () => drawDrag(editor, at, armed), click: () => editor.add(armed, at) };
  const handle = (event.target as HTMLElement).dataset["handle"] as Handle | undefined;
  if (handle) return { drag: () => resizeDrag(editor, handle, at), click: () => undefined };
  const hit = editor.components.findLast((one) => contains(one, at));
  if (!hit) {
    return {
      drag: () => marqueeDrag(editor, at, event.shiftKey),
      click: () => {
        if (!event.shiftKey) editor.select([]);
      },
    };
  }
  const wasSelected = editor.selection.has(hit.id);
  if (!wasSelected && !event.shiftKey) editor.select([hit.id]);
  return {
    drag: () => {
      if (!editor.selection.has(hit.id)) editor.select([hit.id], true);
      return moveDrag(editor, at);
    },
    click: () => {
      if (event.shiftKey) editor.toggle(hit);
      else if (wasSelected) editor.select([hit.id]);
    },
  };
}

export class Press {
  readonly #editor: Editor;
  readonly #start: Point;
  readonly #meaning: Meaning;
  #drag: Drag | undefined;

  constructor(editor: Editor, event: PointerEvent) {
    this.#editor = editor;
    this.#start = placeOf(event);
    this.#meaning = meaningOf(editor, event);
  }

  move(event: PointerEvent): void {
    const { x, y } = this.#start;
    if (!this.#drag && Math.hypot(event.clientX - x, event.clientY - y) < trembling) return;
    this.#drag ??= this.#meaning.drag();
    this.#drag.move(this.#editor.toPage(placeOf(event)), {
      shift: event.shiftKey,
      free: event.ctrlKey || event.metaKey,
      copy: event.altKey,
    });
  }

  get isDrag(): boolean {
    return this.#drag !== undefined;
  }

  /** The pointer was lifted. */
  end(): void {
    if (this.#drag) this.#drag.end();
    else this.#meaning.click();
  }

  cancel(): void {
    this.#drag?.cancel();
  }
}
