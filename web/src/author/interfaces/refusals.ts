/** Why the server has not stored an interface, as a sentence that says what to do. */
import { codes, ServerError } from "../../api/server.ts";
import { ta } from "../../i18n/author.ts";
import type { NetInfo, SerialInfo } from "../../model/interfaces.ts";
import type { Notices } from "../shell/notices.svelte.ts";

/** An interface as it is sent: the server assigns the node id. */
type Settings =
  | { readonly controlType: "netPortInfo"; readonly info: NetInfo }
  | { readonly controlType: "comInfo"; readonly info: SerialInfo };

export function refusalText(error: unknown, one: Settings, notices: Pick<Notices, "sentenceOf">): string {
  const known = error instanceof ServerError ? sentenceFor(error.code, one) : undefined;
  return known ?? notices.sentenceOf(error);
}

const awayCodes: number[] = [codes.serialCheck, codes.udpOpen, codes.tcpClientOpen, codes.tcpServerOpen];

/** Whether nothing is wrong with the settings as such: the device, or the port of the server's machine, is not there. */
export function isAwayRefusal(error: unknown): boolean {
  return error instanceof ServerError && awayCodes.includes(error.code);
}

function sentenceFor(code: number, one: Settings): string | undefined {
  if (code === codes.nameTaken) return ta("nameTaken");
  if (code === codes.duplicate) return ta("duplicateSettings");
  if (one.controlType === "comInfo") {
    return code === codes.serialCheck ? ta("serialRefused", one.info.comPort) : undefined;
  }
  const { ipAddress, port, dstIpAddress, dstPort } = one.info;
  if (code === codes.tcpClientOpen) return ta("nothingAnswers", `${dstIpAddress}:${dstPort}`);
  if (code === codes.tcpServerOpen) return ta("cantListen", port);
  if (code === codes.udpOpen) return ta("cantBind", `${ipAddress || "*"}:${port}`);
  return undefined;
}
