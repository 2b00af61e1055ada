import type { Interface, NetMode } from "../../model/interfaces.ts";

/** The four kinds, as the author chooses between them. */
export const kinds = ["TCP_Client", "UDP", "TCP_Server", "serial"] as const satisfies readonly (NetMode | "serial")[];
export type Kind = (typeof kinds)[number];

/** Keys of the kinds' names. */
export const kindKeys = {
  TCP_Client: "kindTcpClient",
  UDP: "kindUdp",
  TCP_Server: "kindTcpServer",
  serial: "kindSerial",
} as const;

export function kindKey(one: Interface): (typeof kindKeys)[Kind] {
  return kindKeys[one.controlType === "comInfo" ? "serial" : one.info.netMode];
}
