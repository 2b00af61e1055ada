import { mount } from "svelte";
import { browserClock as clock } from "../api/clock.ts";
import { Connection, openWebSocket } from "../api/connection.ts";
import type { ReportError } from "../api/errors.ts";
import { browserEvents as events } from "../api/pageEvents.ts";
import { createWebSocketAddress } from "../api/port.ts";
import type { Server } from "../api/server.ts";
import { language } from "../i18n/language.svelte.ts";
import Panel from "./Panel.svelte";

/** How long the device vibrates at a press, in ms. */
const tickLength = 12;

export function start(place: HTMLElement, server: Server, reportError: ReportError): void {
  language.startWith(navigator.language);
  const connection = new Connection({ address: createWebSocketAddress(), openSocket: openWebSocket, clock, events });
  const tick = () => void (navigator as Partial<Navigator>).vibrate?.(tickLength);
  const needs = { server, connection, clock, events, storage: localStorage, reportError, tick };
  mount(Panel, { target: place, props: { needs } });
}
