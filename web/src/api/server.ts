/**
 * The server's JSON interface. Each call gives the reply's `data` or throws a ServerError; documents come with their
 * state.
 */
import { asText } from "../model/json.ts";

/** Codes of the reply; those below 0 are this application's own. */
export const codes = {
  done: 20000,
  noConnection: 30100,
  badRequest: 30101,
  serialSend: 30200,
  tcpSend: 30201,
  udpSend: 30202,
  nothingSent: 30203,
  serialCheck: 30300,
  udpOpen: 30301,
  tcpClientOpen: 30302,
  tcpServerOpen: 30303,
  nameTaken: 30304,
  duplicate: 30306,
  /** The server could not be reached, or did not answer in time. */
  unreachable: -1,
  /** The answer did not come from this server. */
  strange: -2,
  /** The stored document has another state than the one that was to be replaced; nothing was written. */
  changed: -3,
} as const;

export class ServerError extends Error {
  override name = "ServerError";

  /** @param text  what the server says; empty for all but clicks and versions */
  constructor(
    readonly code: number,
    readonly text = "",
    readonly route = "",
  ) {
    super(`${route} ${code} ${text}`.trim());
  }
}

/** Whether it is one of this server or of another bundle, which has a class of its own. */
export function isServerError(error: unknown): error is ServerError {
  return error instanceof Error && error.name === "ServerError";
}

/** Longest wait for an answer, in ms. A click takes as long as its devices: 3 s for each command that hangs. */
const answerLimit = 20_000;
const clickLimit = 60_000;

/** A document as it is stored. */
export interface Stored {
  readonly data: unknown;
  /** Tag of this state; empty when the server gives none. */
  readonly tag: string;
}

/** Conditions for a document's state: only if it differs from `not`, only if it is `still` this one. */
interface Condition {
  readonly not?: Stored | undefined;
  readonly still?: string;
}

export async function exchange(
  method: "GET" | "POST",
  route: string,
  body?: unknown,
  limit = answerLimit,
  { not, still }: Condition = {},
): Promise<Stored> {
  let envelope: { code?: unknown; data?: unknown; message?: unknown };
  let tag: string;
  try {
    const response = await fetch(route, {
      method,
      cache: "no-store",
      signal: AbortSignal.timeout(limit),
      ...(method === "POST" && { body: JSON.stringify(body ?? {}) }),
      headers: {
        ...(method === "POST" && { "Content-Type": "application/json" }),
        ...(not && { "If-None-Match": not.tag }),
        ...(still && { "If-Match": still }),
      },
    });
    if (not && response.status === 304) return not;
    if (still && response.status === 412) throw new ServerError(codes.changed, "", route);
    // A proxy that compresses a reply makes its tag a weak one, which no write may name. The state is the same.
    tag = response.headers.get("ETag")?.replace(/^W\//, "") ?? "";
    if (!response.ok) throw new ServerError(codes.strange, `HTTP ${response.status}`, route);
    envelope = (await response.json()) as typeof envelope;
  } catch (error) {
    throw asServerError(error, route);
  }
  if (envelope.code !== codes.done) {
    throw new ServerError(Number(envelope.code) || codes.strange, asText(envelope.message), route);
  }
  return { data: envelope.data, tag };
}

async function call(...request: Parameters<typeof exchange>): Promise<unknown> {
  return (await exchange(...request)).data;
}

/** A JSON file that the server sends as it is. */
async function readFile(route: string): Promise<unknown> {
  try {
    const response = await fetch(route, { method: "GET", signal: AbortSignal.timeout(answerLimit) });
    if (!response.ok) throw new ServerError(codes.strange, `HTTP ${response.status}`, route);
    return (await response.json()) as unknown;
  } catch (error) {
    throw asServerError(error, route);
  }
}

function asServerError(error: unknown, route: string): ServerError {
  if (error instanceof ServerError) return error;
  return new ServerError(error instanceof SyntaxError ? codes.strange : codes.unreachable, "", route);
}

const base = "/api/centralControl/";
const post = (route: string, body?: unknown) => call("POST", base + route, body);

/**
 * Replaces a document; with `still`, only if it is in the state of this tag.
 * @returns the tag of the new state
 */
async function replace(route: string, data: unknown, still = ""): Promise<string> {
  return (await exchange("POST", base + route, { data }, answerLimit, { still })).tag;
}

/** The server from which this page was loaded. */
export function createServer() {
  /** The documents that were read last: the server sends one again only when it has changed. Never modified. */
  const kept = new Map<string, Stored>();

  async function read(route: string): Promise<Stored> {
    const stored = await exchange("GET", base + route, undefined, answerLimit, { not: kept.get(route) });
    if (stored.tag) kept.set(route, stored);
    return stored;
  }

  return {
    layout: () => read("getPageLayoutInfo"),
    materials: () => read("getMaterialList"),
    interactions: () => read("getComponentInteractionInfo"),
    interfaces: async () => (await read("getConfigList")).data,

    storeLayout: (data: unknown, still?: string) => replace("setCentralControlWebLayout", data, still),
    storeMaterials: (data: unknown, still?: string) => replace("setMaterialList", data, still),
    storeInteractions: (data: unknown, still?: string) => replace("updateComponentInteraction", data, still),

    addInterface: (controlType: string, info: object) =>
      post(controlType === "comInfo" ? "addComInfo" : "addNetPortInfo", { data: { info } }),
    editInterface: (nodeId: number, controlType: string, info: object) =>
      post(controlType === "comInfo" ? "editComInfo" : "editNetPortInfo", { data: { nodeId, info } }),
    deleteInterface: (nodeId: number) => post("deleteInterfaceConfig", { nodeId }),
    deleteAllInterfaces: () => post("deleteAllInterfaceConfig"),
    serialPorts: () => call("GET", "/api/getServerComList"),

    click: (componentId: number, triggerType: string) =>
      call("POST", `${base}useComponent`, { data: { componentId, interactionArr: [{ triggerType }] } }, clickLimit),

    version: () => call("GET", "/api/getServerVersion"),
    language: () => call("GET", "/api/user/getUserLanguage"),
    setLanguage: (language: string, isAuto: boolean) =>
      call("POST", "/api/user/setUserLanguage", { data: { language, isAuto } }),
    setDeveloperMode: (isDeveloperMode: boolean) =>
      call("POST", "/api/device/setDeveloperMode", { data: { isDeveloperMode } }),

    versions: () => call("GET", "/api/versions"),
    versionDocument: (id: string, name: string) => readFile(`/api/versions/${id}/${name}`),
    nameVersion: (id: string, name: string) => call("POST", "/api/versions/name", { id, name }),
    keepVersion: (name: string) => call("POST", "/api/versions/keep", { name }),
    restoreVersion: (id: string) => call("POST", "/api/versions/restore", { id }),

    reportError: (data: object) => call("POST", "/api/log/reportClientError", { data }),
  };
}

export type Server = ReturnType<typeof createServer>;
