/**
 * The WebSocket connection. While it is open, the server accepts writes from this machine; the connection has no other
 * use. It counts as open from the first echo on, and as lost when an echo does not come: a cut cable closes nothing.
 */

import type { Clock, Timer } from "./clock.ts";
import type { PageEvents } from "./pageEvents.ts";

export type ConnectionState = "connecting" | "open" | "lost";

/** Pause between two heartbeats, longest wait for an echo, and pauses before further attempts, in ms. */
const times = { beat: 4000, echo: 3000, retry: [250, 500, 1000, 2000] };

/** The part of a WebSocket that is used here. */
export interface Socket {
  /** The number of the standard, see socketStates. */
  readonly readyState: number;
  send(text: string): void;
  close(): void;
}

export const socketStates = { connecting: 0, open: 1 } as const;

/** Events of a socket. */
export interface SocketEvents {
  opened(): void;
  heard(): void;
  closed(): void;
}

/** Begins to open a socket. @throws when the address is invalid */
export type OpenSocket = (address: string, events: SocketEvents) => Socket;

export const openWebSocket: OpenSocket = (address, events) => {
  const socket = new WebSocket(address);
  socket.onopen = () => events.opened();
  socket.onmessage = () => events.heard();
  socket.onclose = () => events.closed();
  return socket;
};

export interface ConnectionNeeds {
  /**
   * Asked before each attempt, since settings can change. @param hasFailed  the last attempt ended without an echo
   * @returns undefined when it is not known at the moment
   */
  address(hasFailed: boolean): Promise<string | undefined>;
  readonly openSocket: OpenSocket;
  readonly clock: Clock;
  readonly events: PageEvents;
}

export class Connection {
  #socket: Socket | undefined;
  /** Whether the last attempt ended without an echo. */
  #hasFailed = false;
  #state: ConnectionState = "connecting";
  #attempts = 0;
  #echo: Timer | undefined;
  #next: Timer | undefined;
  #changed: ((state: ConnectionState) => void) | undefined;

  constructor(readonly needs: ConnectionNeeds) {}

  /**
   * Connects, and connects again whenever the connection is lost. Call once. @param changed  called with each new state
   */
  start(changed: (state: ConnectionState) => void): void {
    this.#changed = changed;
    this.needs.events.on("online", () => this.check());
    this.needs.events.on("offline", () => this.#lose());
    this.needs.events.on("shown", () => this.check());
    void this.#connect();
  }

  get state(): ConnectionState {
    return this.#state;
  }

  /** Checks at once whether the server is still there; connects when it isn't. */
  check(): void {
    if (this.#socket?.readyState === socketStates.open) this.#beat();
    else if (this.#socket?.readyState !== socketStates.connecting) void this.#connect();
  }

  async #connect(): Promise<void> {
    this.#next?.cancel();
    const address = await this.needs.address(this.#hasFailed);
    this.#drop();
    if (address === undefined) return this.#lose();
    this.#hasFailed = true;
    try {
      const socket = this.needs.openSocket(address, {
        opened: () => this.#beat(),
        heard: () => this.#hear(),
        closed: () => this.#socket === socket && this.#lose(),
      });
      this.#socket = socket;
    } catch {
      this.#lose();
      return;
    }
    this.#echo = this.needs.clock.after(times.echo, () => this.#lose());
  }

  #hear(): void {
    this.#echo?.cancel();
    this.#next?.cancel();
    this.#attempts = 0;
    this.#hasFailed = false;
    this.#set("open");
    this.#next = this.needs.clock.after(times.beat, () => this.#beat());
  }

  #beat(): void {
    this.#next?.cancel();
    this.#echo?.cancel();
    if (this.#socket?.readyState !== socketStates.open) return this.#lose();
    this.#socket.send("heartbeat");
    this.#echo = this.needs.clock.after(times.echo, () => this.#lose());
  }

  #lose(): void {
    this.#drop();
    this.#set("lost");
    const pause = times.retry[Math.min(this.#attempts++, times.retry.length - 1)]!;
    this.#next?.cancel();
    this.#next = this.needs.clock.after(pause, () => void this.#connect());
  }

  #drop(): void {
    this.#echo?.cancel();
    const socket = this.#socket;
    this.#socket = undefined;
    socket?.close();
  }

  #set(state: ConnectionState): void {
    if (state === this.#state) return;
    this.#state = state;
    this.#changed?.(state);
  }
}
