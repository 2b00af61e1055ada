import { type ChildProcess, spawn } from "node:child_process";
import { cpSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer as createHttpServer, get, type IncomingMessage, request, type Server } from "node:http";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import type { Duplex } from "node:stream";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { waitFor } from "./wait.ts";

/** The folder of the built host, with the application in its dist/. */
const built = process.env["SERVER_BIN"] ?? join(import.meta.dirname, "../../../build/release/bin");

export async function freePort(): Promise<number> {
  const server = createServer();
  await new Promise<void>((resolve) => server.listen(0, "0.0.0.0", resolve));
  const address = server.address();
  await new Promise((resolve) => server.close(resolve));
  if (!address || typeof address === "string") throw new Error("no port");
  return address.port;
}

/**
 * One port for a host: all of HTTP, and the WebSocket under /ws, as a proxy in front of it has them.
 * @param mere  instead only what a forwarded port gives: HTTP
 */
export class FrontPort {
  port = 0;
  #server: Server;

  private constructor(host: Host, mere: boolean) {
    const forward = (from: IncomingMessage, port: number, path = from.url) =>
      request({ host: "127.0.0.1", port, path, method: from.method, headers: from.headers });
    this.#server = createHttpServer((from, to) => {
      const ask = forward(from, host.port).on("error", () => to.writeHead(502).end());
      ask.on("response", (reply) => reply.pipe(to.writeHead(reply.statusCode!, reply.rawHeaders)));
      from.pipe(ask);
    });
    this.#server.on("upgrade", (from, socket) => {
      const shared = !mere && from.url === "/ws";
      const ask = forward(from, shared ? host.webSocketPort : host.port);
      const status = (reply: IncomingMessage) => `HTTP/1.1 ${reply.statusCode} -\r\n${rawHead(reply)}\r\n`;
      ask.on("upgrade", (reply, upgraded) => {
        socket.write(status(reply));
        socket.pipe(upgraded).pipe(socket);
        socket.on("error", () => upgraded.destroy());
        upgraded.on("error", () => socket.destroy());
      });
      ask.on("response", (reply) => socket.end(status(reply)));
      ask.on("error", () => socket.end("HTTP/1.1 502 -\r\n\r\n"));
      ask.end();
    });
  }

  static async start(host: Host, mere: boolean): Promise<FrontPort> {
    const front = new FrontPort(host, mere);
    front.port = await freePort();
    await new Promise<void>((resolve) => front.#server.listen(front.port, "127.0.0.1", resolve));
    return front;
  }

  async [Symbol.asyncDispose](): Promise<void> {
    this.#server.closeAllConnections();
    this.#server.close();
  }
}

function rawHead(reply: IncomingMessage): string {
  return Object.entries(reply.headers)
    .map(([name, value]) => `${name}: ${String(value)}\r\n`)
    .join("");
}

/** The parts of the server's documents that the tests check, by their routes. */
interface Documents {
  getPageLayoutInfo: { pages: { name: string; material: string; components: StoredComponent[] }[] };
  getMaterialList: { materialList: { id: string; name: string; width: number }[] };
  getComponentInteractionInfo: { componentInteractionInfo: { componentArr: { interactionArr: object[] }[] } };
  getConfigList: { configList: { nodeId: number }[] };
}

export interface StoredComponent {
  id: number;
  x: number;
  y: number;
  width: number;
  group: string;
}

/** The built host in folders and on ports of its own: its settings.json must not meet another one's. */
export class Host {
  readonly home = mkdtempSync(join(tmpdir(), "host-"));
  readonly userData = join(this.home, "data");
  port = 0;
  webSocketPort = 0;
  /** The output of the process on its console. */
  output = "";
  #process: ChildProcess | undefined;

  static async start(serialPorts: Record<string, string> = {}): Promise<Host> {
    const host = new Host();
    cpSync(built, join(host.home, "bin"), { recursive: true });
    const config = join(host.home, "Documents", "Sennacroft", "Varnholt");
    mkdirSync(config, { recursive: true });
    mkdirSync(host.userData);
    host.port = await freePort();
    host.webSocketPort = await freePort();
    writeFileSync(
      join(config, "LocalHost.config"),
      JSON.stringify({
        http_port: host.port,
        websocket_port: host.webSocketPort,
        user_data_path: host.userData,
      }),
    );
    writeFileSync(join(host.userData, "SerialPorts.json"), JSON.stringify(serialPorts));
    writeFileSync(join(host.userData, "setting.json"), JSON.stringify({ IsAutoLanguage: false, Language: 1 }));
    await host.launch();
    return host;
  }

  get url(): string {
    return `http://127.0.0.1:${this.port}`;
  }

  async launch(): Promise<void> {
    const { XDG_CONFIG_HOME: _, XDG_DOCUMENTS_DIR: __, ...environment } = process.env;
    this.#process = spawn(join(this.home, "bin", "ServerHost"), {
      env: { ...environment, HOME: this.home, LANG: "en_US.UTF-8" },
      stdio: ["ignore", "pipe", "pipe"],
    });
    for (const stream of [this.#process.stdout, this.#process.stderr]) {
      stream!.on("data", (data: Buffer) => (this.output += data.toString()));
    }
    await waitFor("the host", () =>
      fetch(`${this.url}/api/user/getUserLanguage`).then(
        (reply) => reply.ok,
        () => false,
      ),
    );
  }

  /** Ends the process; its folders stay for another launch. */
  async stop(): Promise<void> {
    const ended = this.#process;
    if (ended?.exitCode !== null) return;
    const gone = new Promise((resolve) => ended.once("exit", resolve));
    ended.kill("SIGTERM");
    await gone;
  }

  async [Symbol.asyncDispose](): Promise<void> {
    await this.stop();
    rmSync(this.home, { recursive: true, force: true });
  }

  file(name: string): string {
    return readFileSync(join(this.userData, name), "utf8");
  }

  /** The `data` of a document as the server sends it. */
  async read<Route extends keyof Documents>(route: Route): Promise<Documents[Route]> {
    const reply = await fetch(`${this.url}/api/centralControl/${route}`);
    return ((await reply.json()) as { data: Documents[Route] }).data;
  }

  /**
   * Posts to a route beside a WebSocket of its own, as a page would.
   * @param route  without a leading "/" one under /api/centralControl/
   */
  async post(route: string, body: object): Promise<number> {
    const socket = await this.#openChannel();
    const path = route.startsWith("/") ? route : `/api/centralControl/${route}`;
    const reply = await fetch(this.url + path, {
      method: "POST",
      body: JSON.stringify(body),
    });
    const { code } = (await reply.json()) as { code: number };
    socket.destroy();
    return code;
  }

  /** A WebSocket that has had its first echo. */
  async #openChannel(): Promise<Duplex> {
    const headers = {
      Connection: "Upgrade",
      Upgrade: "websocket",
      "Sec-WebSocket-Version": "13",
      "Sec-WebSocket-Key": "dGhlIHNhbXBsZSBub25jZQ==",
    };
    const socket = await new Promise<Duplex>((resolve, reject) => {
      get({ port: this.webSocketPort, host: "127.0.0.1", headers })
        .on("upgrade", (_, upgraded) => resolve(upgraded))
        .on("error", reject);
    });
    socket.write(Buffer.concat([Buffer.from([0x81, 0x80 | 9, 0, 0, 0, 0]), Buffer.from("heartbeat")]));
    await new Promise((resolve) => socket.once("data", resolve));
    return socket;
  }

  addTcp(name: string, port: number): Promise<number> {
    const info = { ...newNetInfo, netPortName: name, dstIpAddress: "127.0.0.1", dstPort: port };
    return this.post("addNetPortInfo", { data: { info } });
  }
}
