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

/**
 * Finds the address for each attempt. Without an answer from the server, what it has told before counts: at the default
 * port there may be another server.
 */
export function createWebSocketAddress() {
  let settings: Settings | undefined;

  /** @param hasFailed  there was no echo at the previous address  @returns undefined when the server has told nothing */
  return async (hasFailed: boolean): Promise<string | undefined> => {
    const chosen = chosenPort();
    settings = await readSettings(settings);
    if (!settings && !chosen) return undefined;
    const [first, other] = webSocketAddresses(location, chosen, settings?.told);
    return other && hasFailed && (await isMissing(sharedPath)) ? other : first;
  };
}

interface Settings {
  /** The content of settings.json, which the server writes at its start if it has the right; otherwise nothing. */
  readonly told: unknown;
}

/** @param known  what the server has told before  @returns the same, also undefined, while it does not answer */
async function readSettings(known: Settings | undefined): Promise<Settings | undefined> {
  try {
    const response = await fetch("settings.json", { cache: "no-store", signal: AbortSignal.timeout(answerLimit) });
    if (response.status === 404) return { told: undefined };
    return response.ok ? { told: await response.json() } : known;
  } catch (error) {
    // A file that is no JSON says as much as none, but takes nothing back: it may be a proxy's apology.
    return known ?? (error instanceof SyntaxError ? { told: undefined } : undefined);
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
