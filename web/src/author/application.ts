/**
 * The author's part: the objects that its screens share. Created once, in start.ts; each component gets it from the
 * context.
 */
import { createContext } from "svelte";
import type { Clock } from "../api/clock.ts";
import type { Equipment } from "../api/equipment.ts";
import type { PageEvents } from "../api/pageEvents.ts";
import type { Server } from "../api/server.ts";
import type { Gate } from "./lock/gate.svelte.ts";
import type { ProjectStore } from "./project/store.svelte.ts";
import type { Finder } from "./find/finder.svelte.ts";
import type { Notices } from "./shell/notices.svelte.ts";
import type { Route } from "./shell/route.svelte.ts";

export interface Application {
  readonly server: Server;
  readonly equipment: Equipment;
  readonly clock: Clock;
  readonly events: PageEvents;
  readonly store: ProjectStore;
  readonly notices: Notices;
  readonly route: Route;
  readonly finder: Finder;
  readonly gate: Gate;
}

/** `application` is called while a component is made, below the one that has called `provideApplication`. */
export const [application, provideApplication] = createContext<Application>();
