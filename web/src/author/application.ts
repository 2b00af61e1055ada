/** The author's part: what its screens share. Made once, in start.ts; each component reaches it by the context. */
import { createContext } from "svelte";
import type { Server } from "../api/server.ts";
import type { ProjectStore } from "./project/store.svelte.ts";
import type { Notices } from "./shell/notices.svelte.ts";
import type { Route } from "./shell/route.svelte.ts";

export interface Application {
  readonly server: Server;
  readonly store: ProjectStore;
  readonly notices: Notices;
  readonly route: Route;
}

/** `application` is called while a component is made, below the one that has called `provideApplication`. */
export const [application, provideApplication] = createContext<Application>();
