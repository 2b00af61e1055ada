import { beforeEach, describe, expect, it } from "vitest";
import {
  Connection,
  type ConnectionState,
  type Socket,
  type SocketEvents,
  socketStates,
} from "../../src/api/connection.ts";
import { FakeClock } from "../support/fakeClock.ts";
import { FakeEvents } from "../support/fakeEvents.ts";
import { settled } from "../support/settled.ts";

const closed = 3;

class FakeSocket implements Socket {
  readyState: number = socketStates.connecting;
  readonly sent: string[] = [];

  constructor(
    readonly address: string,
    readonly events: SocketEvents,
  ) {}

  send(text: string): void {
    this.sent.push(text);
  }

  close(): void {
    this.readyState = closed;
  }

  /** The server takes the connection; unless it is mute, it answers the first heartbeat. */
  open(isMute = false): void {
    this.readyState = socketStates.open;
    this.events.opened();
    if (!isMute) this.events.heard();
  }

  /** The connection ends, and not by this side. */
  end(): void {
    this.readyState = closed;
    this.events.closed();
  }
}

let clock: FakeClock;
let events: FakeEvents;
let sockets: FakeSocket[];
/** What the connection has said of itself, and how it has asked for the address. */
let states: ConnectionState[];
let asked: boolean[];
let connection: Connection;

const last = () => sockets.at(-1)!;

async function start(address: () => string | undefined = () => "ws://here/"): Promise<void> {
  connection = new Connection({
    address: (hasFailed) => {
      asked.push(hasFailed);
      return Promise.resolve(address());
    },
    openSocket: (at, said) => {
      if (at === "none") throw new SyntaxError("no address");
      sockets.push(new FakeSocket(at, said));
      return last();
    },
    clock,
    events,
  });
  connection.start((state) => states.push(state));
  await settled();
}

const startAndOpen = () => start().then(() => last().open());

beforeEach(() => {
  clock = new FakeClock();
  events = new FakeEvents();
  [sockets, states, asked] = [[], [], []];
});

it("does nothing before it is started", async () => {
  new Connection({ address: () => expect.unreachable(), openSocket: () => expect.unreachable(), clock, events });
  await clock.pass(10_000);
});

describe("a connection", () => {
  it("is open from the first echo on, not from when the socket is", async () => {
    await start();
    expect([sockets.length, last().address, last().sent]).toEqual([1, "ws://here/", []]);
    last().open(true);
    expect([last().sent, connection.state, states]).toEqual([["heartbeat"], "connecting", []]);
    last().events.heard();
    expect([connection.state, states]).toEqual(["open", ["open"]]);
  });

  it("beats 4 s after each echo, and says once that it is open", async () => {
    await startAndOpen();
    for (const beats of [2, 3]) {
      await clock.pass(3999);
      expect(last().sent.length).toBe(beats - 1);
      await clock.pass(1);
      expect(last().sent.length).toBe(beats);
      last().events.heard();
    }
    expect([sockets.length, states]).toEqual([1, ["open"]]);
  });

  it.each([
    ["the socket does not open within 3 s", async () => start(), 3000],
    ["the first echo stays out for 3 s", async () => start().then(() => last().open(true)), 3000],
    ["a later echo stays out for 3 s", startAndOpen, 7000],
  ])("is lost when %s", async (_, begin, after) => {
    await begin();
    await clock.pass(after - 1);
    expect(states).not.toContain("lost");
    await clock.pass(1);
    expect([connection.state, last().readyState]).toEqual(["lost", closed]);
  });

  it("is lost at once when the socket closes, or there is no network", async () => {
    await startAndOpen();
    last().end();
    expect(states).toEqual(["open", "lost"]);
    await startAndOpen();
    await events.happen("offline");
    expect([states.slice(-2), last().readyState]).toEqual([["open", "lost"], closed]);
  });
});

describe("a lost connection", () => {
  const nextAttemptAfter = async (pause: number) => {
    const before = sockets.length;
    await clock.pass(pause - 1);
    expect(sockets.length).toBe(before);
    await clock.pass(1);
    expect(sockets.length).toBe(before + 1);
  };

  it("is tried again after growing pauses, and after the shortest one when it was open meanwhile", async () => {
    await start();
    for (const pause of [250, 500, 1000, 2000, 2000]) {
      last().end();
      await nextAttemptAfter(pause);
    }
    last().open();
    last().end();
    await nextAttemptAfter(250);
    expect(states).toEqual(["lost", "open", "lost"]);
  });

  it("is asked for at another address where the one before gave no echo", async () => {
    await start();
    last().end();
    await clock.pass(250);
    last().open();
    last().end();
    await clock.pass(250);
    expect(asked).toEqual([false, true, false]);
  });

  it.each([["is none"], ["is not known"]])("is tried again where the address %s", async (what) => {
    let address: string | undefined = what === "is none" ? "none" : undefined;
    await start(() => address);
    expect(states).toEqual(["lost"]);
    address = "ws://there/";
    await nextAttemptAfter(250);
    expect(last().address).toBe("ws://there/");
  });

  it.each([
    ["the page is looked at again", "shown"],
    ["the network is back", "online"],
  ] as const)("is tried at once when %s", async (_, event) => {
    await start();
    last().end();
    await events.happen(event);
    // The attempt that was to come is not made as well.
    await clock.pass(2999);
    expect(sockets.length).toBe(2);
    last().open();
    expect(states).toEqual(["lost", "open"]);
  });

  it("does not hear what becomes of its old socket", async () => {
    await startAndOpen();
    const [old] = sockets;
    await events.happen("offline");
    await clock.pass(250);
    last().open();
    old!.end();
    expect(connection.state).toBe("open");
  });
});

describe("a page that is looked at again", () => {
  it("asks at once over an open connection whether the server is there", async () => {
    await startAndOpen();
    await events.happen("shown");
    expect(last().sent).toEqual(["heartbeat", "heartbeat"]);
    await clock.pass(3000);
    expect(connection.state).toBe("lost");
  });

  it("waits for a connection that is being opened", async () => {
    await start();
    await events.happen("shown");
    expect([sockets.length, last().readyState]).toEqual([1, socketStates.connecting]);
  });
});
