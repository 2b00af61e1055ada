/** The server's JSON interface. Each call gives the reply's `data` or throws a ServerError. */

/** Codes of the reply; those below 0 are this application's own. */
export const codes = {
  done: 20000, noConnection: 30100, badRequest: 30101,
  serialSend: 30200, tcpSend: 30201, udpSend: 30202, nothingSent: 30203,
  serialCheck: 30300, udpOpen: 30301, tcpClientOpen: 30302, tcpServerOpen: 30303,
  nameTaken: 30304, duplicate: 30306,
  /** The server was not reached, or did not answer in time. */
  unreachable: -1,
  /** The answer was none of this server's. */
  strange: -2,
} as const;

export class ServerError extends Error {
  override name = "ServerError";

  /** @param text  what the server says; empty for all but clicks */
  constructor(readonly code: number, readonly text = "", readonly route = "") {
    super(`${route} ${code} ${text}`.trim());
  }
}

/** Longest wait for an answer, in ms. A click takes as long as its devices: 3 s for each command that hangs. */
const answerLimit = 20_000;
const clickLimit = 60_000;

async function call(method: "GET" | "POST", route: string, body?: unknown, limit = answerLimit): Promise<unknown> {
  let envelope: { code?: unknown; data?: unknown; message?: unknown };
  try {
    const response = await fetch(route, {
      method, cache: "no-store", signal: AbortSignal.timeout(limit),
      ...(method === "POST" && { body: JSON.stringify(body ?? {}), headers: { "Content-Type": "application/json" } }),
    });
    if (!response.ok) throw new ServerError(codes.strange, `HTTP ${response.status}`, route);
    envelope = (await response.json()) as typeof envelope;
  } catch (error) {
    if (error instanceof ServerError) throw error;
    throw new ServerError(error instanceof SyntaxError ? codes.strange : codes.unreachable, "", route);
  }
  if (envelope.code !== codes.done) {
    throw new ServerError(Number(envelope.code) || codes.strange, String(envelope.message ?? ""), route);
  }
  return envelope.data;
}

const base = "/api/centralControl/";
const get = (route: string) => call("GET", base + route);
const post = (route: string, body?: unknown) => call("POST", base + route, body);

export const server = {
  layout: () => get("getPageLayoutInfo"),
  materials: () => get("getMaterialList"),
  interactions: () => get("getComponentInteractionInfo"),
  interfaces: () => get("getConfigList"),

  storeLayout: (data: object) => post("setCentralControlWebLayout", { data }),
  storeMaterials: (data: object) => post("setMaterialList", { data }),
  storeInteractions: (data: object) => post("updateComponentInteraction", { data }),

  addInterface: (controlType: string, info: object) =>
    post(controlType === "comInfo" ? "addComInfo" : "addNetPortInfo", { data: { info } }),
  editInterface: (nodeId: number, controlType: string, info: object) =>
    post(controlType === "comInfo" ? "editComInfo" : "editNetPortInfo", { data: { nodeId, info } }),
  deleteInterface: (nodeId: number) => post("deleteInterfaceConfig", { nodeId }),
  deleteAllInterfaces: () => post("deleteAllInterfaceConfig"),
  serialPorts: () => get("getServerComList"),

  click: (componentId: number, triggerType: string) =>
    call("POST", `${base}useComponent`, { data: { componentId, interactionArr: [{ triggerType }] } }, clickLimit),

  version: () => call("GET", "/api/getServerVersion"),
  language: () => call("GET", "/api/user/getUserLanguage"),
  setLanguage: (language: string, isAuto: boolean) =>
    call("POST", "/api/user/setUserLanguage", { data: { language, isAuto } }),
  setDeveloperMode: (isDeveloperMode: boolean) =>
    call("POST", "/api/device/setDeveloperMode", { data: { isDeveloperMode } }),
  reportError: (data: object) => call("POST", "/api/log/reportClientError", { data }),
};
