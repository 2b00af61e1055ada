/** Where the WebSocket is, derived from the page's own address and the server's settings. */
import { asNumber, asObject } from "./json.ts";

export const defaultPort = 8081;
/** The path of the WebSocket beside the page, where a proxy serves both on one port. */
export const sharedPath = "/ws";

/**
 * The possible addresses, the likeliest first. A page that came over TLS, or from another port than the server's own,
 * came through a proxy, which has the WebSocket on the same port; or the ports are merely forwarded.
 * @param page  of `location`  @param chosen  port that was set in this browser; 0: none  @param settings  settings.json
 */
export function webSocketAddresses(
  page: { protocol: string; hostname: string; port: string },
  chosen: number,
  settings: unknown,
): string[] {
  const told = asObject(settings);
  const isSecure = page.protocol === "https:";
  const place = `${isSecure ? "wss" : "ws"}://${page.hostname}`;
  if (chosen) return [`${place}:${chosen}/`];
  const shared = `${place}${page.port && `:${page.port}`}${sharedPath}`;
  if (isSecure) return [shared]; // browsers allow no plain one from such a page
  const own = `${place}:${asNumber(told["websocket_port"], defaultPort, 1, 65535)}/`;
  const pagePort = Number(page.port || 80);
  return asNumber(told["http_port"], pagePort, 1, 65535) === pagePort ? [own] : [shared, own];
}
