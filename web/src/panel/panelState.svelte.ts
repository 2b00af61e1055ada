/** The state of the panel: the pages, the connection, and what each component shows. */
import type { Clock } from "../api/clock.ts";
import type { Connection, ConnectionState } from "../api/connection.ts";
import type { ReportError } from "../api/errors.ts";
import type { PageEvents } from "../api/pageEvents.ts";
import { codes, isServerError, type Server } from "../api/server.ts";
import { failureText } from "../i18n/panel.ts";
import { language } from "../i18n/language.svelte.ts";
import { asNumber, asObject, sameJson } from "../model/json.ts";
import { middlePosition } from "../model/interactions.ts";
import {
  allComponents,
  asks,
  type Component,
  componentTitle,
  emptyLayout,
  type Layout,
  type Page,
  type SliderComponent,
  type SwitchComponent,
} from "../model/layout.ts";
import { readMaterials } from "../model/materials.ts";
import { layoutOnPhone } from "../model/phoneLayout.ts";
import { isRefused, readLayout, type Refusal } from "../model/readLayout.ts";
import { type Pictures, PictureStore } from "../view/pictures.ts";
import type { Live } from "./live.svelte.ts";
import type { Presses } from "./presses.ts";

/** The result of the last press: not answered yet, all sent, or failed. */
export interface Feedback {
  phase: "sent" | "done" | "failed";
  /** Of a failure: what was pressed, what the server said of it, exactly as it came, and what to do. */
  title: string;
  said: string;
  advice: string;
  /** Of a failure: whether all of it may have been sent nevertheless. */
  unsure: boolean;
  /** Distinguishes one press from the next on the same component. */
  serial: number;
}

/** How long "done" and "failed" stay, and how often the pages are read again, in ms. */
const times = { done: 1200, failed: 20_000, refresh: 30_000 };
const valuesKey = "panelValues";

/** What the components have in writing when devices' values are something to one of them. */
const usesValues = /"binding":|\{value /;

/** Everything that the panel uses from outside. */
export interface PanelNeeds {
  readonly server: Pick<Server, "layout" | "materials" | "interactions" | "language" | "click">;
  readonly connection: Pick<Connection, "start" | "check">;
  readonly clock: Clock;
  readonly events: PageEvents;
  /** Keeps texts in this browser. */
  readonly storage: Pick<Storage, "getItem" | "setItem">;
  readonly reportError: ReportError;
  /** Lets the finger feel that a component was pressed, where the device can. */
  readonly tick: () => void;
}

export class PanelState {
  #layout = $state.raw<Layout>(emptyLayout);
  /** Whether the screen is that of a phone held upright: pages are shown as laid out for that. */
  isPhone = $state(false);
  readonly layout: Layout = $derived(this.isPhone ? layoutOnPhone(this.#layout) : this.#layout);
  refused = $state.raw<Refusal | undefined>();
  loaded = $state(false);
  connection = $state<ConnectionState>("connecting");
  pictures = $state.raw<Pictures>(new Map());
  /** Switches that are on (1), and positions of sliders: what was sent last from this browser. */
  values = $state<Record<number, number>>({});
  pressed = $state<Record<number, boolean>>({});
  /** Whether a finger is on a component: until it is lifted, nothing moves under it. */
  isTouched = $state(false);
  feedback = $state<Record<number, Feedback>>({});

  /** What the devices say; nothing as long as no page uses it. */
  live = $state.raw<Live | undefined>();

  /** What stands over pages; nothing as long as no page needs it. */
  dialogs = $state.raw<typeof import("./dialogs.ts") | undefined>();

  /** The failures that are shown, the latest first. */
  readonly failures = $derived(
    Object.entries(this.feedback)
      .filter(([, { phase }]) => phase === "failed")
      .map(([id, feedback]) => ({ id: Number(id), ...feedback }))
      .sort((one, other) => other.serial - one.serial),
  );

  #stored: { layout: unknown; materials: unknown } = { layout: undefined, materials: undefined };
  #pictureStore = new PictureStore();
  #serial = 0;
  /** A reading of everything was requested and has not succeeded since. */
  #isDue = true;

  /** The pages that are shown now, with what presses their components. */
  #presses = new Map<Presses, () => Page>();

  /** @param lost  called when the connection is gone; presses under way have ended */
  constructor(
    readonly needs: PanelNeeds,
    lost: () => void,
  ) {
    this.values = readValues(needs.storage.getItem(valuesKey));
    needs.connection.start((state) => {
      const isBack = state === "open" && this.connection === "lost";
      if (state === "lost") {
        this.cancelPresses();
        lost();
      }
      if (isBack || (state === "open" && !this.loaded)) void this.reload(true);
      this.connection = state;
    });
    needs.clock.every(times.refresh, () => this.connection === "open" && !this.#isBusy() && void this.reload());
    needs.events.on("shown", () => void this.reload(true));
  }

  /** A page is shown now, with its presses. Returns what ends them when the page goes. */
  showPage(page: () => Page, presses: Presses): () => void {
    this.#presses.set(presses, page);
    return () => {
      presses.cancelAll();
      this.#presses.delete(presses);
    };
  }

  /** Whether a finger is on a component. */
  get isHeld(): boolean {
    return [...this.#presses.keys()].some((one) => one.isHeld);
  }

  /** Whether a finger is on a component of another page than these presses: of the header, say. */
  isHeldBeside(presses: Presses): boolean {
    return [...this.#presses.keys()].some((one) => one !== presses && one.isHeld);
  }

  setPressed(id: number, pressed: boolean): void {
    this.pressed[id] = pressed;
    this.isTouched = this.isHeld;
  }

  /** Ends all presses under way. */
  cancelPresses(): void {
    for (const presses of this.#presses.keys()) presses.cancelAll();
  }

  #isBusy(): boolean {
    return Object.values(this.pressed).some(Boolean);
  }

  /**
   * Reads everything again; or reads the layout first, and the rest only when the layout has changed, since each save
   * marks it. Unchanged documents stay as they are. A failure leaves what is shown, and the next reading makes up for
   * it.
   */
  async reload(everything = false): Promise<void> {
    this.#isDue ||= everything;
    const { server } = this.needs;
    try {
      const [{ data: layout }] = await Promise.all([server.layout(), language.load(server)]);
      if (!this.#isDue && sameJson(layout, this.#stored.layout)) return;
      const { data: materials } = await server.materials();
      if (!this.loaded || !sameJson(layout, this.#stored.layout)) {
        const read = readLayout(layout);
        this.refused = isRefused(read) ? read : undefined;
        const next = isRefused(read) ? emptyLayout : read;
        await this.#loadFor(next);
        this.#layout = next;
      }
      if (!sameJson(materials, this.#stored.materials)) {
        const read = readMaterials(materials);
        this.pictures = this.#pictureStore.update(isRefused(read) ? [] : read);
      }
      this.#stored = { layout, materials };
      this.loaded = true;
      this.#isDue = false;
    } catch (error) {
      if (!isServerError(error)) this.needs.reportError(error, "panel");
    }
  }

  /** Loads what these pages need and others do not. */
  async #loadFor(next: Layout): Promise<void> {
    const components = allComponents(next);
    const asking = next.pages.some(({ place }) => place === "popup") || components.some(asks);
    if (asking) this.dialogs ??= await import("./dialogs.ts");
    if (!this.live && usesValues.test(JSON.stringify(components))) await this.#hearDevices();
  }

  async #hearDevices(): Promise<void> {
    const { Live } = await import("./live.svelte.ts");
    this.live = new Live({
      ...this.needs,
      shown: () => [...this.#presses.values()].flatMap((page) => page().components),
      isOpen: () => this.connection === "open",
    });
  }

  /** Sends the commands of a trigger and shows the result. Never queues: without a connection it fails. */
  async fire(component: Component, trigger: string): Promise<boolean> {
    const { server, clock } = this.needs;
    const serial = ++this.#serial;
    const title = componentTitle(component);
    const show = (phase: Feedback["phase"], said = "", advice = "", unsure = false) => {
      this.feedback[component.id] = { phase, title, said, advice, unsure, serial };
    };
    if (this.connection !== "open") return false;
    show("sent");
    try {
      await server.click(component.id, trigger);
      if (this.feedback[component.id]?.serial === serial) show("done");
      clock.after(times.done, () => this.dismiss(component.id, serial));
      return true;
    } catch (error) {
      const { code, text } = isServerError(error) ? error : { code: codes.strange, text: String(error) };
      const { said, advice } = failureText(code, text);
      show("failed", said, advice, code === codes.unreachable);
      clock.after(times.failed, () => this.dismiss(component.id, serial));
      if (code === codes.unreachable || code === codes.noConnection) this.needs.connection.check();
      return false;
    }
  }

  dismiss(id: number, serial: number): void {
    if (this.feedback[id]?.serial === serial) delete this.feedback[id];
  }

  /** Whether a switch is on: as its device says where it follows one, otherwise as it was sent last from here. */
  isOn(component: SwitchComponent): boolean {
    return this.live?.standing(component)?.isOn ?? this.values[component.id] === 1;
  }

  /**
   * The position that the device of a slider that follows has, or that was set last; undefined: none was. Under a finger
   * it stays where the finger is.
   */
  setTo(slider: SliderComponent): number | undefined {
    const own = this.values[slider.id];
    return this.pressed[slider.id] ? own : (this.live?.standing(slider)?.position ?? own);
  }

  /** The position that a slider shows: until one was sent, the middle, as in the editor. */
  positionOf(slider: SliderComponent): number {
    return Math.min(this.setTo(slider) ?? middlePosition(slider), slider.steps - 1);
  }

  /** @param value  undefined: none was sent */
  setValue(id: number, value: number | undefined): void {
    this.live?.hold(id);
    if (value === undefined) delete this.values[id];
    else this.values[id] = value;
    this.needs.storage.setItem(valuesKey, JSON.stringify(this.values));
  }
}

function readValues(text: string | null): Record<number, number> {
  try {
    const stored = asObject(JSON.parse(text ?? "{}"));
    return Object.fromEntries(Object.entries(stored).map(([id, value]) => [id, asNumber(value, 0, 0, 1000)]));
  } catch {
    return {};
  }
}
