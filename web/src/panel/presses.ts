/**
 * Converts the pointer events of fingers on components to triggers. Knows no element and no server, so that each way of
 * pressing is defined in one place. Several fingers at once are independent of each other.
 */
import type { Clock, Timer } from "../api/clock.ts";
import {
  asks,
  type AskingComponent,
  type ButtonComponent,
  type Component,
  type LinkComponent,
  type SliderComponent,
  type SwitchComponent,
} from "../model/layout.ts";
import { type Point, targetAt } from "../model/geometry.ts";
import { sliderTrigger } from "../model/interactions.ts";

/** How far a slider's rail ends inside its box, in px of the page; its style sets the same. */
const railMargin = { horizontal: 32, vertical: 58 };

export interface PressHooks {
  /** The components that can be pressed now, in drawing order. */
  targets(): readonly Component[];
  /** Least side of a target, in px of the page as it is scaled now. */
  side(): number;
  /** Whether anything can be sent. If not, the press is refused, and the hook informs the operator. */
  isAllowed(component: Component): boolean;
  /** Shows or ends the pressed look. */
  setPressed(id: number, pressed: boolean): void;
  /** Asks the operator; true at once if the component asks nothing. */
  confirm(component: AskingComponent): Promise<boolean>;
  /** Sends the commands of a trigger. True when all were sent. */
  fire(component: Component, trigger: string): Promise<boolean>;
  isOn(component: SwitchComponent): boolean;
  setOn(id: number, on: boolean): void;
  /** Position of a slider as it is shown. */
  position(component: SliderComponent): number;
  /** The position that was set last; undefined as long as none was, or after it was set to undefined. */
  setTo(component: SliderComponent): number | undefined;
  setPosition(id: number, position: number | undefined): void;
  follow(component: LinkComponent): void;
}

interface Press {
  component: Component;
  /** Ends when the finger is lifted or the press was taken away. */
  held: boolean;
  timer?: Timer;
  /** The last send of this press; releases wait for it, so that the order is kept. */
  sent: Promise<unknown>;
  longDone: boolean;
  /** Slider: the position before the press, the last one that was sent, and whether one is being sent. */
  before?: number | undefined;
  sentPosition?: number;
  sliding?: boolean;
}

export class Presses {
  #presses = new Map<number, Press>();

  constructor(
    readonly hooks: PressHooks,
    readonly clock: Clock,
  ) {}

  /** Whether a finger is on a component. */
  get isHeld(): boolean {
    return this.#presses.size > 0;
  }

  /**
   * Whether a finger may turn into a swipe: it is the only one, and on nothing that follows it or has sent already.
   */
  canSwipe(pointer: number): boolean {
    const component = this.#presses.get(pointer)?.component;
    const waits =
      !component || (component.type === "button" ? component.mode === "click" : component.type !== "slider");
    return waits && this.#presses.size <= (component ? 1 : 0);
  }

  down(pointer: number, at: Point): boolean {
    const component = targetAt(this.hooks.targets(), at, this.hooks.side());
    if (!component || [...this.#presses.values()].some((one) => one.component.id === component.id)) return false;
    if (component.type !== "link" && !this.hooks.isAllowed(component)) return false;
    const press: Press = {
      component,
      held: true,
      sent: Promise.resolve(),
      longDone: false,
      before: component.type === "slider" ? this.hooks.setTo(component) : undefined,
    };
    this.#presses.set(pointer, press);
    this.hooks.setPressed(component.id, true);
    if (component.type === "slider") this.#slide(component, at);
    if (component.type === "button") this.#buttonDown(component, press);
    return true;
  }

  #buttonDown(component: ButtonComponent, press: Press): void {
    switch (component.mode) {
      case "press":
        void this.#ask(component, "press");
        break;
      case "pressRelease":
        press.sent = this.hooks.fire(component, "press");
        break;
      case "repeat":
        void this.#repeat(component, press);
        break;
      case "long":
        press.timer = this.clock.after(component.hold, () => {
          press.longDone = true;
          this.hooks.setPressed(component.id, false);
          void this.#ask(component, "longPress");
        });
        break;
      case "click":
    }
  }

  move(pointer: number, at: Point): void {
    const press = this.#presses.get(pointer);
    if (!press) return;
    const { component } = press;
    if (component.type === "slider") {
      this.#slide(component, at);
      if (component.live && !asks(component)) void this.#sendLive(component, press);
      return;
    }
    // Modes that have begun to send stay pressed until the finger leaves the screen.
    const waits = component.type !== "button" || component.mode === "click" || component.mode === "long";
    if (waits && !press.longDone) this.hooks.setPressed(component.id, this.#inside(component, at));
    if (component.type === "button" && component.mode === "long" && !this.#inside(component, at)) {
      press.timer?.cancel();
    }
  }

  up(pointer: number, at: Point): void {
    const press = this.#end(pointer);
    if (!press) return;
    const { component } = press;
    if (component.type === "slider") {
      this.#slide(component, at);
      void this.#sendSlider(component, press);
    } else if (component.type === "button" && component.mode === "pressRelease") {
      void press.sent.then(() => this.hooks.fire(component, "release"));
    } else if (this.#inside(component, at)) {
      this.activate(component, true);
    }
  }

  /** A whole press without a pointer: the keyboard, or an aid of the browser. */
  activate(component: Component, byPointer = false): void {
    if (component.type === "link") return this.hooks.follow(component);
    if (!byPointer && !this.hooks.isAllowed(component)) return;
    if (component.type === "switch") return void this.#toggle(component);
    if (component.type !== "button") return;
    if (component.mode === "click") return void this.#ask(component, "click");
    if (byPointer) return;
    if (component.mode === "pressRelease") {
      void this.hooks.fire(component, "press").then(() => this.hooks.fire(component, "release"));
    } else {
      void this.#ask(component, component.mode === "long" ? "longPress" : component.mode);
    }
  }

  /** A slider moved by keys, one position or more at a time. */
  stepSlider(component: SliderComponent, by: number): void {
    if (!this.hooks.isAllowed(component)) return;
    const before = this.hooks.setTo(component);
    const position = Math.min(component.steps - 1, Math.max(0, this.hooks.position(component) + by));
    this.hooks.setPosition(component.id, position);
    void this.#sendSlider(component, { component, held: false, sent: Promise.resolve(), longDone: false, before });
  }

  /** The browser took the pointer away. Ends what was begun, and sends nothing else. */
  cancel(pointer: number): void {
    const press = this.#end(pointer);
    if (!press) return;
    const { component } = press;
    if (component.type === "slider") this.hooks.setPosition(component.id, press.sentPosition ?? press.before);
    if (component.type === "button" && component.mode === "pressRelease") {
      void press.sent.then(() => this.hooks.fire(component, "release"));
    }
  }

  cancelAll(): void {
    for (const pointer of [...this.#presses.keys()]) this.cancel(pointer);
  }

  #end(pointer: number): Press | undefined {
    const press = this.#presses.get(pointer);
    if (!press) return undefined;
    this.#presses.delete(pointer);
    press.held = false;
    press.timer?.cancel();
    this.hooks.setPressed(press.component.id, false);
    return press;
  }

  #inside(component: Component, at: Point): boolean {
    return targetAt([component], at, this.hooks.side()) === component;
  }

  async #ask(component: ButtonComponent, trigger: string): Promise<boolean> {
    return (await this.hooks.confirm(component)) && this.hooks.fire(component, trigger);
  }

  async #repeat(component: ButtonComponent, press: Press): Promise<void> {
    while (press.held && (await this.hooks.fire(component, "repeat"))) {
      await new Promise<void>((done) => (press.timer = this.clock.after(component.interval, done)));
    }
  }

  async #toggle(component: SwitchComponent): Promise<void> {
    const on = !this.hooks.isOn(component);
    if (!(await this.hooks.confirm(component))) return;
    this.hooks.setOn(component.id, on);
    if (!(await this.hooks.fire(component, on ? "on" : "off"))) this.hooks.setOn(component.id, !on);
  }

  #slide(component: SliderComponent, at: Point): void {
    const margin = component.vertical ? railMargin.vertical : railMargin.horizontal;
    const length = (component.vertical ? component.height : component.width) - 2 * margin;
    const along = component.vertical ? component.y + component.height - margin - at.y : at.x - component.x - margin;
    const share = Math.min(1, Math.max(0, along / Math.max(1, length)));
    this.hooks.setPosition(component.id, Math.round(share * (component.steps - 1)));
  }

  async #sendSlider(component: SliderComponent, press: Press): Promise<void> {
    const { before } = press;
    await press.sent;
    const position = this.hooks.position(component);
    if (position === (press.sentPosition ?? before)) return;
    if (!(await this.hooks.confirm(component)) || !(await this.hooks.fire(component, sliderTrigger(position)))) {
      this.hooks.setPosition(component.id, press.sentPosition ?? before);
    }
  }

  /** While a send is under way, the positions in between are left out; the newest follows when it has ended. */
  async #sendLive(component: SliderComponent, press: Press): Promise<void> {
    if (press.sliding) return;
    press.sliding = true;
    for (;;) {
      const position = this.hooks.position(component);
      if (!press.held || position === (press.sentPosition ?? press.before)) break;
      const sent = this.hooks.fire(component, sliderTrigger(position));
      press.sent = sent;
      if (!(await sent)) break;
      press.sentPosition = position;
    }
    press.sliding = false;
  }
}
