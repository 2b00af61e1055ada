import { afterEach, expect, it, vi } from "vitest";
import { createWebSocketAddress } from "../../src/api/port.ts";

afterEach(() => vi.unstubAllGlobals());

const json = (text: string) => () => Promise.resolve(new Response(text));
const status = (code: number) => () => Promise.resolve(new Response("", { status: code }));
const away = () => Promise.reject(new TypeError("fetch failed"));
const told = json('{"http_port":8086,"websocket_port":9001}');

it.each<[string, (() => Promise<Response>)[], (string | undefined)[]]>([
  ["keeps to the port that was told while the server is away", [told, away], ["ws://hall:9001/", "ws://hall:9001/"]],
  ["keeps to it while only a proxy answers", [told, status(502)], ["ws://hall:9001/", "ws://hall:9001/"]],
  ["keeps to it while a proxy apologises", [told, json("<p>")], ["ws://hall:9001/", "ws://hall:9001/"]],
  ["is unknown until the server answers", [away, told], [undefined, "ws://hall:9001/"]],
  ["is the default one while the file is damaged", [json(""), told], ["ws://hall:8081/", "ws://hall:9001/"]],
  ["is the default one when the server tells none", [told, status(404)], ["ws://hall:9001/", "ws://hall:8081/"]],
  [
    "follows the server to another port",
    [told, json('{"http_port":8086,"websocket_port":9002}')],
    ["ws://hall:9001/", "ws://hall:9002/"],
  ],
])("the WebSocket's address %s", async (_, answers, addresses) => {
  vi.stubGlobal("location", new URL("http://hall:8086/"));
  vi.stubGlobal("localStorage", { getItem: () => null });
  const find = createWebSocketAddress();
  const found = [];
  for (const answer of answers) {
    vi.stubGlobal("fetch", answer);
    found.push(await find(false));
  }
  expect(found).toEqual(addresses);
});
