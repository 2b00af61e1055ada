import { mount } from "svelte";
import { browserClock as clock } from "../api/clock.ts";
import { Connection, openWebSocket } from "../api/connection.ts";
import { createEquipment } from "../api/equipment.ts";
import type { ReportError } from "../api/errors.ts";
import { browserEvents as events } from "../api/pageEvents.ts";
import { createWebSocketAddress } from "../api/port.ts";
import type { Server } from "../api/server.ts";
import { language } from "../i18n/language.svelte.ts";
import { Finder } from "./find/finder.svelte.ts";
import { Drafts } from "./project/draft.ts";
import { ProjectStore } from "./project/store.svelte.ts";
import Entrance from "./lock/Entrance.svelte";
import { Gate } from "./lock/gate.svelte.ts";
import { Notices } from "./shell/notices.svelte.ts";
import { Route } from "./shell/route.svelte.ts";

export async function start(place: HTMLElement, server: Server, reportError: ReportError): Promise<void> {
  language.startWith(navigator.language);
  const connection = new Connection({ address: createWebSocketAddress(), openSocket: openWebSocket, clock, events });
  const store = new ProjectStore({ server, drafts: new Drafts(clock), connection, clock, events, reportError });
  const notices = new Notices(clock, reportError);
  const gate = new Gate({ store, clock, session: sessionStorage, storage: localStorage });
  const equipment = createEquipment();
  const app = { server, equipment, clock, events, store, notices, route: new Route(), finder: new Finder(), gate };
  await Promise.all([language.load(server), store.load()]);
  mount(Entrance, { target: place, props: { app } });
}
