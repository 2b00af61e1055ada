import { expect, it } from "vitest";
import { webSocketAddresses } from "../../src/model/webSocketAddress.ts";

const own = { http_port: 8086, websocket_port: 9001 };

it.each([
  ["the server's own port", "http://hall:8086", 0, own, ["ws://hall:9001/"]],
  ["its port 80", "http://hall", 0, { ...own, http_port: 80 }, ["ws://hall:9001/"]],
  ["another port", "http://hall:8080", 0, own, ["ws://hall:8080/ws", "ws://hall:9001/"]],
  ["another port, the usual one", "http://[fe80::1]", 0, own, ["ws://[fe80::1]/ws", "ws://[fe80::1]:9001/"]],
  ["TLS", "https://hall", 0, { ...own, http_port: 443 }, ["wss://hall/ws"]],
  ["TLS on a port", "https://hall:8443", 0, undefined, ["wss://hall:8443/ws"]],
  ["no settings", "http://hall:9000", 0, undefined, ["ws://hall:8081/"]],
  ["settings that are none", "http://hall:9000", 0, { http_port: "x", websocket_port: 1e9 }, ["ws://hall:65535/"]],
  ["a chosen port", "http://hall:8080", 7000, own, ["ws://hall:7000/"]],
  ["a chosen port and TLS", "https://hall", 7000, undefined, ["wss://hall:7000/"]],
])("the WebSocket of a page from %s", (_, page, chosen, settings, addresses) => {
  expect(webSocketAddresses(new URL(page), chosen, settings)).toEqual(addresses);
});
