/** The page that is edited: what is selected, how it is looked at, and everything that can be done to it. */
import { aligned, type Alignment, distributed, type Order, reordered } from "../../model/arrange.ts";
import { pasted, readClip, writeClip } from "../../model/clipboard.ts";
import { freePlace } from "../../model/freePlace.ts";
import type { Gap } from "../../model/gaps.ts";
import { boxAround, type Box, contains, type Point, scaledInto } from "../../model/geometry.ts";
import { newId } from "../../model/ids.ts";
import type { Interactions } from "../../model/interactions.ts";
import { type Component, componentSides, type ComponentType, copyComponents, type Page } from "../../model/layout.ts";
import { changedOnPhone } from "../../model/phoneEdit.ts";
import { onPhone } from "../../model/phoneLayout.ts";
import { type Project, withComponents, withCopiedCommands, withPage } from "../../model/project.ts";
import type { Guide } from "../../model/snapping.ts";
import type { Lead } from "../shell/route.svelte.ts";
import type { ProjectStore } from "../project/store.svelte.ts";
import { CanvasView } from "./canvasView.svelte.ts";
import { newWithText } from "./newWithText.ts";

/** Shift of a copy against its original, in px of the page. */
const copyShift = 20;
const clipKey = "clipboard";
/** What the clipboard of the system still holds after the menu has copied something else. */
const staleKey = "clipboardBefore";

/** What the editor does with the project; its changes are steps that the store can undo. */
export type EditedProject = Pick<ProjectStore, "project" | "change" | "endStep">;

export class Editor extends CanvasView {
  selection = $state.raw<ReadonlySet<number>>(new Set());
  /** How far the selection is dragged; the project changes when the drag ends. */
  shift = $state.raw<Point>({ x: 0, y: 0 });
  isMoving = $state(false);
  /** Whether copies are dragged, and the selection itself stays. */
  isCopying = $state(false);
  /** Boxes of components while they are resized. */
  preview = $state.raw<ReadonlyMap<number, Box>>(new Map());
  guides = $state.raw<readonly Guide[]>([]);
  /** Distances that are equal at the place to which the selection is dragged. */
  gaps = $state.raw<readonly Gap[]>([]);
  marquee = $state.raw<Box | undefined>();
  /** What is being dragged from the palette: its middle in px of the screen, its size in px of the page. */
  ghost = $state.raw<(Box & { readonly icon: string }) | undefined>();
  /** The kind that the next drag on the page draws. */
  armed = $state.raw<ComponentType | undefined>();
  /** Id of the component that was added last, as long as nothing else was done: typing writes its text. */
  fresh = 0;
  /** Id of the component whose text is being written on the page; 0: none. */
  writing = $state(0);
  /** What was typed to begin; empty: it begins with the text that is there. */
  typed = "";
  /** What the inspector is asked to show of the selection, by a link from elsewhere. */
  asked = $state.raw<Lead | undefined>();
  grid = $state(10);
  snapsToGrid = $state(true);
  snapsToParts = $state(true);

  /** Whether the author wants to lay out the page for phones. */
  wantsPhone = $state(false);
  /** The page as it is kept, with both layouts. */
  readonly bothLayouts: Page | undefined = $derived.by(() =>
    this.store.project.layout.pages.find((one) => one.id === this.pageId),
  );
  /** Whether the page is shown, and changed, as it is on phones. */
  readonly isOnPhone: boolean = $derived(this.wantsPhone && this.bothLayouts?.phone !== undefined);
  /** The page as it is shown. */
  readonly page: Page | undefined = $derived(
    this.bothLayouts && this.isOnPhone ? onPhone(this.bothLayouts) : this.bothLayouts,
  );
  readonly components: readonly Component[] = $derived(this.page?.components ?? []);
  readonly selected: readonly Component[] = $derived(this.components.filter((one) => this.selection.has(one.id)));
  readonly movable: readonly Component[] = $derived(this.selected.filter((one) => !one.locked));
  #pastes = 0;
  #lastClip = "";

  /** @param storage  where this browser keeps what was copied last */
  constructor(
    readonly pageId: string,
    readonly store: EditedProject,
    readonly storage: Pick<Storage, "getItem" | "setItem">,
  ) {
    super();
  }

  /** Selects components, and with each of them its whole group. */
  select(ids: Iterable<number>, more = false): void {
    const wanted = new Set(ids);
    const groups = new Set(this.components.filter((one) => wanted.has(one.id) && one.group).map((one) => one.group));
    for (const one of this.components) if (groups.has(one.group)) wanted.add(one.id);
    this.selection = more ? new Set([...this.selection, ...wanted]) : wanted;
    this.store.endStep();
  }

  /** Takes a component and its group out of the selection, or adds them. */
  toggle(component: Component): void {
    if (!this.selection.has(component.id)) return this.select([component.id], true);
    const isOut = (one: Component) =>
      one.id === component.id || (component.group !== "" && one.group === component.group);
    this.selection = new Set(this.selected.filter((one) => !isOut(one)).map((one) => one.id));
  }

  /** Selects what lies at that point of the page, unless that is selected. */
  selectForMenu(at: Point): void {
    const hit = this.components.findLast((one) => contains(one, at));
    if (!hit) this.select([]);
    else if (!this.selection.has(hit.id)) this.select([hit.id]);
  }

  selectAll(): void {
    this.select(this.components.filter((one) => !one.locked).map((one) => one.id));
  }

  selectNext(by: number): void {
    if (this.components.length === 0) return;
    const at = this.components.findIndex((one) => this.selection.has(one.id));
    const next = (at + by + this.components.length) % this.components.length;
    this.selection = new Set([this.components[at < 0 && by < 0 ? this.components.length - 1 : next]!.id]);
  }

  /** Changes the page, in one step; with the same tag in a row, all in one. */
  changePage(change: (page: Page) => Page, tag = ""): void {
    this.store.change(this.#changed(change), tag);
  }

  #changed(change: (page: Page) => Page): Project {
    const { isOnPhone } = this;
    return withPage(this.store.project, this.pageId, (page) =>
      isOnPhone ? changedOnPhone(page, change) : change(page),
    );
  }

  /** Changes components by their ids. */
  changeParts(ids: Iterable<number>, change: (one: Component) => Component, tag = ""): void {
    const wanted = new Set(ids);
    if (wanted.size) this.changePage((page) => withComponents(page, wanted, change), tag);
  }

  changeSelected(change: (one: Component) => Component, tag = ""): void {
    this.changeParts(this.selection, change, tag && `${tag} ${[...this.selection].join()}`);
  }

  placeBoxes(boxes: ReadonlyMap<number, Box>, tag = ""): void {
    this.changeParts(
      boxes.keys(),
      (one) => {
        const { x, y, width, height } = boxes.get(one.id) ?? one;
        return { ...one, x, y, width, height };
      },
      tag,
    );
  }

  /**
   * Gives the box around the selection another place or size. Within it the components keep their proportions, and of
   * several the locked ones stay as they are.
   */
  placeFrame(change: Partial<Box>, tag: string): void {
    const around = boxAround(this.selected);
    if (!around) return;
    const box = { ...around, ...change };
    const fitted = (one: Component): Box =>
      this.selected.length === 1 ? box : scaledInto(one, around, box, componentSides.least);
    const parts = this.selected.length === 1 ? this.selected : this.movable;
    this.placeBoxes(new Map(parts.map((one) => [one.id, fitted(one)])), `${tag} ${[...this.selection].join()}`);
  }

  nudge(dx: number, dy: number): void {
    this.changeParts(
      this.movable.map((one) => one.id),
      (one) => ({ ...one, x: one.x + dx, y: one.y + dy }),
      `nudge ${[...this.selection].join()}`,
    );
  }

  /** Adds a component with its middle at that point of the page, in that box, or at the next free place; and selects it. */
  add(type: ComponentType, at?: Point | Box): void {
    const fresh = newWithText(type);
    const drawn = at && "width" in at;
    const place = drawn
      ? at
      : at
        ? { x: this.snap(at.x - fresh.width / 2), y: this.snap(at.y - fresh.height / 2) }
        : freePlace(fresh, this.seen(), this.components, this.snapsToGrid ? this.grid : 1);
    const isUpright = fresh.type === "slider" && drawn && at.height > at.width;
    const component = { ...fresh, ...place, ...(isUpright && { vertical: true }) };
    this.store.endStep();
    // A group box goes beneath what is there, so that it doesn't cover what it shall frame.
    this.changePage((page) => ({
      ...page,
      components: type === "group" ? [component, ...page.components] : [...page.components, component],
    }));
    this.select([component.id]);
    this.armed = undefined;
    this.fresh = component.id;
  }

  /** Has the next drag on the page draw a component of that kind, or no longer. */
  arm(type: ComponentType): void {
    const isSame = this.armed === type;
    this.select([]);
    this.armed = isSame ? undefined : type;
  }

  snap(value: number): number {
    return this.snapsToGrid ? Math.round(value / this.grid) * this.grid : Math.round(value);
  }

  remove(): void {
    const gone = new Set(this.movable.map((one) => one.id));
    if (gone.size === 0) return;
    this.store.endStep();
    this.changePage((page) => ({ ...page, components: page.components.filter((one) => !gone.has(one.id)) }));
    this.selection = new Set();
  }

  /** Copies components, by default the selection, to a place that is shifted by that much; selects the copies. */
  duplicate(by: Point = { x: copyShift, y: copyShift }, of: readonly Component[] = this.selected): void {
    if (of.length === 0) return;
    const { components, ids } = copyComponents(of);
    this.insert(
      components.map((one) => ({ ...one, x: one.x + by.x, y: one.y + by.y, locked: false })),
      ids,
      this.store.project.interactions,
    );
  }

  /** Adds these components with the commands of those that they are copies of, in one step; and selects them. */
  insert(components: readonly Component[], ids: ReadonlyMap<number, number>, from: Interactions): void {
    this.store.endStep();
    const next = this.#changed((page) => ({
      ...page,
      components: [...page.components, ...components],
    }));
    this.store.change(withCopiedCommands(next, from, ids));
    this.select(components.map((one) => one.id));
  }

  #kept(): string {
    return this.storage.getItem(clipKey) ?? "";
  }

  get canPaste(): boolean {
    return readClip(this.#kept()) !== undefined;
  }

  /**
   * The selection as a text for the clipboard; empty when nothing is selected.
   * @param isSystems  the text goes to the clipboard of the system too
   */
  copy(isSystems = true): string {
    if (this.selected.length === 0) return "";
    const text = writeClip(this.selected, this.store.project.interactions);
    // The clipboard of the system is only reached by key; the menu's copy and other tabs use this.
    this.storage.setItem(staleKey, isSystems ? "" : this.#kept());
    this.storage.setItem(clipKey, text);
    this.#pastes = 0;
    this.#lastClip = text;
    return text;
  }

  cut(isSystems = true): string {
    const text = this.copy(isSystems);
    this.remove();
    return text;
  }

  /**
   * Pastes what the text holds, or else what was copied last in this browser. False when there is nothing.
   * @param at  the left upper corner of what is pasted; without it the place that it had, each time further on
   */
  paste(text = "", at?: Point): boolean {
    const isNewest = readClip(text) && text !== this.storage.getItem(staleKey);
    const source = isNewest ? text : this.#kept();
    const clip = readClip(source);
    if (!clip) return false;
    this.#pastes = source === this.#lastClip ? this.#pastes + 1 : 0;
    this.#lastClip = source;
    const { components, ids } = pasted(clip, at ? 0 : this.#pastes * copyShift);
    const from = at && boxAround(components);
    const by = from ? { x: this.snap(at.x) - from.x, y: this.snap(at.y) - from.y } : { x: 0, y: 0 };
    this.insert(
      components.map((one) => ({ ...one, x: one.x + by.x, y: one.y + by.y })),
      ids,
      clip.interactions,
    );
    return true;
  }

  align(alignment: Alignment): void {
    this.store.endStep();
    this.#place(aligned(this.movable, alignment));
  }

  distribute(axis: "x" | "y"): void {
    this.store.endStep();
    this.#place(distributed(this.movable, axis));
  }

  #place(components: readonly Component[]): void {
    this.placeBoxes(new Map(components.map((one) => [one.id, one])));
  }

  order(order: Order): void {
    this.store.endStep();
    const { selection } = this;
    this.changePage((page) => ({
      ...page,
      components: reordered(page.components, (one) => selection.has(one.id), order),
    }));
  }

  toggleLock(): void {
    const locked = !this.selected.every((one) => one.locked);
    this.store.endStep();
    this.changeSelected((one) => ({ ...one, locked }));
  }

  group(): void {
    if (this.selected.length < 2) return;
    const group = newId("g");
    this.store.endStep();
    this.changeSelected((one) => ({ ...one, group }));
  }

  ungroup(): void {
    this.store.endStep();
    this.changeSelected((one) => ({ ...one, group: "" }));
  }

  /** The box around the selection as it is shown now. */
  frame(): Box | undefined {
    const box = boxAround(this.selected.map((one) => this.preview.get(one.id) ?? one));
    return box && { ...box, x: box.x + this.shift.x, y: box.y + this.shift.y };
  }

  /** Whether one component is selected whose text can be written where it stands. */
  get canWrite(): boolean {
    const [one] = this.selected;
    return this.movable.length === 1 && this.selected.length === 1 && one!.type !== "clock" && one!.type !== "image";
  }

  startWriting(typed = ""): void {
    if (!this.canWrite) return;
    this.typed = typed;
    this.writing = this.selected[0]!.id;
  }

  /** Keeps the text that was written, as one step; without one it stays as it was. */
  endWriting(text?: string): void {
    const id = this.writing;
    this.writing = 0;
    if (text === undefined || this.components.find((one) => one.id === id)?.look.text === text) return;
    this.store.endStep();
    this.changeParts([id], (one) => ({ ...one, look: { ...one.look, text } }));
    this.store.endStep();
  }
}
