import { type ChildProcess, spawn } from "node:child_process";
import { createSocket, type Socket as Datagrams } from "node:dgram";
import { closeSync, constants, existsSync, mkdtempSync, openSync, readFileSync, rmSync } from "node:fs";
import { createServer, type Server, type Socket } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { waitFor } from "./wait.ts";

abstract class Recorder {
  /** Everything that a device has received so far, as text with one byte per character. */
  abstract bytes: string;

  /** Waits until the device has these bytes, at any place. */
  async has(bytes: string): Promise<void> {
    await waitFor(
      () => `the bytes ${JSON.stringify(bytes)} in ${JSON.stringify(this.bytes)}`,
      () => this.bytes.includes(bytes),
    );
  }
}

/** A device on a TCP port. */
export class TcpDevice extends Recorder {
  bytes = "";
  port = 0;
  /** What it says to what it gets; empty: nothing. One character for each byte. */
  answer: (bytes: string) => string = () => "";
  #server: Server = createServer((socket) => {
    this.#sockets.add(socket);
    socket.on("data", (data) => {
      this.bytes += data.toString("latin1");
      const answer = this.answer(data.toString("latin1"));
      if (answer) socket.write(answer, "latin1");
    });
    socket.on("error", () => undefined);
    socket.on("close", () => this.#sockets.delete(socket));
  });
  #sockets = new Set<Socket>();

  static async start(port = 0): Promise<TcpDevice> {
    const device = new TcpDevice();
    await new Promise<void>((resolve) => device.#server.listen(port, "127.0.0.1", resolve));
    device.port = (device.#server.address() as { port: number }).port;
    return device;
  }

  /** Sends this of its own accord, to all that are connected. */
  say(bytes: string): void {
    this.#sockets.forEach((socket) => socket.write(bytes, "latin1"));
  }

  /** Switches it off: its connections are reset and its port refuses. */
  async stop(): Promise<void> {
    this.#sockets.forEach((socket) => socket.resetAndDestroy());
    await new Promise((resolve) => this.#server.close(resolve));
  }

  async [Symbol.asyncDispose](): Promise<void> {
    if (this.#server.listening) await this.stop();
  }
}

/** A device that takes datagrams. */
export class UdpDevice extends Recorder {
  bytes = "";
  port = 0;
  #socket: Datagrams = createSocket("udp4", (data) => (this.bytes += data.toString("latin1")));

  static async start(): Promise<UdpDevice> {
    const device = new UdpDevice();
    await new Promise<void>((resolve) => device.#socket.bind(0, "127.0.0.1", resolve));
    device.port = device.#socket.address().port;
    return device;
  }

  async [Symbol.asyncDispose](): Promise<void> {
    this.#socket.close();
  }
}

/** A serial line, as a pair of pseudo terminals that socat makes; what arrives goes into a file. */
export class SerialDevice extends Recorder {
  readonly folder = mkdtempSync(join(tmpdir(), "line-"));
  readonly path = join(this.folder, "line");
  #process: ChildProcess | undefined;
  #held = -1;

  static async start(): Promise<SerialDevice> {
    const device = new SerialDevice();
    device.#process = spawn(
      "socat",
      ["-u", `pty,raw,echo=0,link=${device.path}`, `OPEN:${join(device.folder, "bytes")},creat,append`],
      { stdio: "ignore" },
    );
    await waitFor("the serial line", () => existsSync(device.path));
    // Kept open, since the other side of a pseudo terminal ends when nobody has it open any more.
    device.#held = openSync(device.path, constants.O_RDWR | constants.O_NOCTTY);
    return device;
  }

  get bytes(): string {
    const path = join(this.folder, "bytes");
    return existsSync(path) ? readFileSync(path, "latin1") : "";
  }

  async [Symbol.asyncDispose](): Promise<void> {
    closeSync(this.#held);
    this.#process?.kill();
    rmSync(this.folder, { recursive: true, force: true });
  }
}
