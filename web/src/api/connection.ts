/**
 * The WebSocket connection. While it is open the server takes what this machine writes; it says nothing else.
 * It counts as open from the first echo on, and as lost when an echo stays out: a cut cable closes nothing.
 */

export type ConnectionState = "connecting" | "open" | "lost";

/** Pause between two heartbeats, longest wait for an echo, and pauses before further attempts, in ms. */
const times = { beat: 4000, echo: 3000, retry: [250, 500, 1000, 2000] };

export class Connection {
  #socket: WebSocket | undefined;
  /** Whether the last attempt ended without an echo. */
  #hasFailed = false;
  #state: ConnectionState = "connecting";
  #attempts = 0;
  #echo: ReturnType<typeof setTimeout> | undefined;
  #next: ReturnType<typeof setTimeout> | undefined;

  /** @param address  asked before each attempt, since settings can change  @param changed  told each new state */
  constructor(
    readonly address: (hasFailed: boolean) => Promise<string>,
    readonly changed: (state: ConnectionState) => void,
  ) {
    addEventListener("online", () => this.check());
    addEventListener("offline", () => this.#lose());
    document.addEventListener("visibilitychange", () => document.visibilityState === "visible" && this.check());
    void this.#connect();
  }

  get state(): ConnectionState {
    return this.#state;
  }

  /** Asks at once whether the server is still there; connects when it isn't. */
  check(): void {
    if (this.#socket?.readyState === WebSocket.OPEN) this.#beat();
    else if (this.#socket?.readyState !== WebSocket.CONNECTING) void this.#connect();
  }

  async #connect(): Promise<void> {
    clearTimeout(this.#next);
    const address = await this.address(this.#hasFailed);
    this.#drop();
    this.#hasFailed = true;
    let socket: WebSocket;
    try {
      socket = new WebSocket(address);
    } catch {
      this.#lose();
      return;
    }
    this.#socket = socket;
    this.#echo = setTimeout(() => this.#lose(), times.echo);
    socket.onopen = () => this.#beat();
    socket.onclose = () => this.#socket === socket && this.#lose();
    socket.onmessage = () => {
      clearTimeout(this.#echo);
      clearTimeout(this.#next);
      this.#attempts = 0;
      this.#hasFailed = false;
      this.#set("open");
      this.#next = setTimeout(() => this.#beat(), times.beat);
    };
  }

  #beat(): void {
    clearTimeout(this.#next);
    clearTimeout(this.#echo);
    if (this.#socket?.readyState !== WebSocket.OPEN) return this.#lose();
    this.#socket.send("heartbeat");
    this.#echo = setTimeout(() => this.#lose(), times.echo);
  }

  #lose(): void {
    this.#drop();
    this.#set("lost");
    const pause = times.retry[Math.min(this.#attempts++, times.retry.length - 1)];
    clearTimeout(this.#next);
    this.#next = setTimeout(() => void this.#connect(), pause);
  }

  #drop(): void {
    clearTimeout(this.#echo);
    const socket = this.#socket;
    this.#socket = undefined;
    socket?.close();
  }

  #set(state: ConnectionState): void {
    if (state === this.#state) return;
    this.#state = state;
    this.changed(state);
  }
}
