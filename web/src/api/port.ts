/** The address of the WebSocket: the one that was set in this browser, otherwise the one in settings.json. */
import { asNumber } from "../model/json.ts";
import { sharedPath, webSocketAddresses } from "../model/webSocketAddress.ts";

const key = "webSocketPort";
/** Longest wait for an answer, in ms. */
const answerLimit = 3000;

/** The port that was set in this browser; 0: none. */
export function chosenPort(): number {
  return asNumber(Number(localStorage.getItem(key)), 0, 0, 65535);
}

export function choosePort(port: number): void {
  if (port) localStorage.setItem(key, String(port));
  else localStorage.removeItem(key);
}

/** @param hasFailed  there was no answer at the previous address */
export async function webSocketAddress(hasFailed: boolean): Promise<string> {
  const [first, other] = webSocketAddresses(location, chosenPort(), await readSettings());
  return other && hasFailed && (await isMissing(sharedPath)) ? other : first!;
}

/** The server writes settings.json at its start if it has the right; without that file the defaults count. */
async function readSettings(): Promise<unknown> {
  try {
    const response = await fetch("settings.json", { cache: "no-store", signal: AbortSignal.timeout(answerLimit) });
    return response.ok ? await response.json() : undefined;
  } catch {
    return undefined;
  }
}

/** Whether the server itself answers that there is nothing. A proxy whose server is away answers something else. */
async function isMissing(path: string): Promise<boolean> {
  try {
    return (await fetch(path, { cache: "no-store", signal: AbortSignal.timeout(answerLimit) })).status === 404;
  } catch {
    return false;
  }
}
