/** The devices' values and the state of their connections, for what the panel shows now. Loaded when a page uses them. */
import type { Clock, Timer } from "../api/clock.ts";
import { createEquipment, type Equipment } from "../api/equipment.ts";
import type { ReportError } from "../api/errors.ts";
import type { PageEvents } from "../api/pageEvents.ts";
import { isServerError, type Server } from "../api/server.ts";
import { isBound, valueNames } from "../model/binding.ts";
import { readInterfaceStates } from "../model/interfaceStates.ts";
import { asArray, asObject } from "../model/json.ts";
import type { Component } from "../model/layout.ts";
import { readValues, standingOf, type Standing, unknown, type Value, type Values } from "../model/values.ts";

/**
 * In ms: how often is asked for changed values, for all of them, and for the interfaces; how long what was set by a press
 * is shown before what the device says; how long a device has time to answer before its values are not up to date.
 */
const times = { values: 500, all: 10_000, interfaces: 2000, held: 3000, answer: 2000 };

/** Values are asked for in groups of so many, since an address has its limits. */
const groupSize = 40;

export interface LiveNeeds {
  readonly equipment?: Pick<Equipment, "values" | "interfaceStates">;
  readonly server: Pick<Server, "interactions">;
  readonly clock: Clock;
  readonly events: PageEvents;
  readonly reportError: ReportError;
  /** The components of all pages that are shown now. */
  readonly shown: () => readonly Component[];
  /** Whether there is a connection. */
  readonly isOpen: () => boolean;
}

export class Live {
  #values = $state.raw<Values>(new Map());
  /** The names that were asked for last, and those of them for which that was new a short time ago. */
  #asked = $state.raw<ReadonlySet<string>>(new Set());
  #new = $state.raw<ReadonlySet<string>>(new Set());
  /** The components of which an interface has failed. */
  #apart = $state.raw<ReadonlySet<number>>(new Set());
  /** Components that show what was set by a press. */
  #held = $state<Record<number, boolean>>({});

  readonly #equipment: Pick<Equipment, "values" | "interfaceStates">;
  /** The number for the next request, by the names of a group. */
  #last = new Map<string, number>();
  #holds = new Map<number, Timer>();
  #isAsking = false;
  #allAt = 0;
  #interfacesAt = 0;
  #namesOf = new WeakMap<Component, ReadonlySet<string>>();

  constructor(readonly needs: LiveNeeds) {
    this.#equipment = needs.equipment ?? createEquipment();
    needs.clock.every(times.values, () => void this.ask());
  }

  /** How a component stands; nothing: the devices' values are nothing to it. */
  standing(component: Component): Standing | undefined {
    if (!isBound(component)) return undefined;
    const names = this.#names(component);
    const standing = standingOf(component, names, new Map([...names].map((name) => [name, this.#value(name)])));
    return this.#held[component.id] ? { ...standing, isOn: undefined, position: undefined } : standing;
  }

  /** A device that nobody looked at was not asked either: what it said last is not held against it at once. */
  #value(name: string): Value {
    const known = this.#values.get(name) ?? unknown;
    return this.#new.has(name) || !this.#asked.has(name) ? { ...known, isStale: false } : known;
  }

  /** Whether an interface of a component has failed, and it is to say so. */
  isApart({ id, binding }: Component): boolean {
    return binding?.warns === true && this.#apart.has(id);
  }

  /** What was set by a press is shown until the device had time to say what it made of it. */
  hold(id: number): void {
    this.#holds.get(id)?.cancel();
    this.#held[id] = true;
    this.#holds.set(
      id,
      this.needs.clock.after(times.held, () => delete this.#held[id]),
    );
  }

  /** Asks for what is shown now, unless nobody sees it. Without an answer, what is known becomes stale. */
  async ask(): Promise<void> {
    const { clock, events, isOpen, shown, reportError } = this.needs;
    if (!events.isShown() && this.#asked.size) this.#asked = new Set();
    if (this.#isAsking || !events.isShown() || !isOpen()) return;
    const components = shown();
    this.#isAsking = true;
    try {
      await this.#askValues([...new Set(components.flatMap((one) => [...this.#names(one)]))].sort());
      if (components.some((one) => one.binding?.warns) && clock.now() >= this.#interfacesAt) {
        await this.#askInterfaces();
      }
    } catch (error) {
      // What the server refuses, or that it is away, is seen by what is not up to date.
      if (!isServerError(error)) reportError(error, "values");
      this.#values = new Map([...this.#values].map(([name, { value }]) => [name, { value, isStale: true }]));
      this.#last.clear();
    } finally {
      this.#isAsking = false;
    }
  }

  #names(component: Component): ReadonlySet<string> {
    let names = this.#namesOf.get(component);
    if (!names) this.#namesOf.set(component, (names = valueNames(component)));
    return names;
  }

  async #askValues(names: readonly string[]): Promise<void> {
    const { clock } = this.needs;
    this.#noteNew(names);
    if (clock.now() >= this.#allAt) {
      this.#last.clear(); // also notices what has left the server's document
      this.#allAt = clock.now() + times.all;
    }
    for (let at = 0; at < names.length; at += groupSize) {
      const group = names.slice(at, at + groupSize);
      const key = group.join();
      const after = this.#last.get(key) ?? 0;
      const { values, last } = readValues(await this.#equipment.values(group, after));
      if (after === 0 || values.size) {
        const kept = [...this.#values].filter(([name]) => after !== 0 || !group.includes(name));
        this.#values = new Map([...kept, ...values]);
      }
      this.#last.set(key, last);
    }
  }

  #noteNew(names: readonly string[]): void {
    const added = names.filter((name) => !this.#asked.has(name));
    if (added.length === 0 && names.length === this.#asked.size) return;
    this.#asked = new Set(names);
    this.#new = new Set([...this.#new, ...added]);
    this.needs.clock.after(times.answer, () => {
      this.#new = new Set([...this.#new].filter((name) => !added.includes(name)));
    });
  }

  async #askInterfaces(): Promise<void> {
    const states = readInterfaceStates(await this.#equipment.interfaceStates());
    const { data } = await this.needs.server.interactions();
    this.#interfacesAt = this.needs.clock.now() + times.interfaces;
    this.#apart = new Set(
      [...interfacesOf(data)].flatMap(([id, nodeIds]) =>
        nodeIds.some((nodeId) => (states.get(nodeId)?.state ?? "failed") === "failed") ? [id] : [],
      ),
    );
  }
}

/** The node ids of the interfaces to which the commands of each component go, of the stored document. */
function interfacesOf(document: unknown): Map<number, number[]> {
  const info = asObject(asObject(document)["componentInteractionInfo"]);
  return new Map(
    asArray(info["componentArr"])
      .map(asObject)
      .map((component) => [
        Number(component["componentId"]),
        asArray(component["interactionArr"])
          .flatMap((one) => asArray(asObject(one)["commandArr"]))
          .map((command) => Number(asObject(command)["portIndex"])),
      ]),
  );
}
