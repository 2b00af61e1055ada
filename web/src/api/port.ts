/** The port of the WebSocket: what this browser was told, else what the server left beside the application. */
import { asNumber, asObject } from "../model/json.ts";

export const defaultPort = 8081;
const key = "webSocketPort";

/** The port that was set in this browser; 0: none. */
export function chosenPort(): number {
  return asNumber(Number(localStorage.getItem(key)), 0, 0, 65535);
}

export function choosePort(port: number): void {
  if (port) localStorage.setItem(key, String(port));
  else localStorage.removeItem(key);
}

/** The server writes settings.json at its start where it may; without it the default counts. */
export async function webSocketPort(): Promise<number> {
  const chosen = chosenPort();
  if (chosen) return chosen;
  try {
    const response = await fetch("settings.json", { cache: "no-store", signal: AbortSignal.timeout(3000) });
    if (!response.ok) return defaultPort;
    return asNumber(asObject(await response.json())["websocket_port"], defaultPort, 1, 65535);
  } catch {
    return defaultPort;
  }
}
