/** What the equipment does, as the server tells it, and interfaces that are stored while their device is away. */
import { exchange, type Stored } from "./server.ts";

const base = "/api/equipment/";

/** The server from which this page was loaded. Calls are as those of its other interface. */
export function createEquipment() {
  let states: Stored | undefined;
  let config: Stored | undefined;

  return {
    /** The same object as last time while nothing has changed. */
    async interfaceStates(): Promise<unknown> {
      states = await exchange("GET", `${base}interfaces`, undefined, undefined, { not: states });
      return states.data;
    },

    /** @param nodeId  of the interface that is changed; undefined: a new one */
    async storeInterface(nodeId: number | undefined, controlType: string, info: object): Promise<void> {
      const kind = controlType === "comInfo" ? "serial" : "net";
      await exchange("POST", `${base}store`, { data: { kind, info, ...(nodeId !== undefined && { nodeId }) } });
    },

    /** The named values that changed after this number; 0: all of these names. Their devices are asked for a while. */
    values: async (names: readonly string[], after: number): Promise<unknown> =>
      (await exchange("GET", `${base}values?after=${after}&watch=${names.map(encodeURIComponent).join(",")}`)).data,

    /** Lets the device of an interface be asked for a while. */
    async askDevice(nodeId: number): Promise<void> {
      await exchange("GET", `${base}values?watch=&interface=${nodeId}`);
    },

    /** The document of what devices are asked, and what their answers mean. The same object while nothing has changed. */
    async config(): Promise<Stored> {
      config = await exchange("GET", `${base}config`, undefined, undefined, { not: config });
      return config;
    },

    /** Replaces that document if it is in the state of this tag. */
    async storeConfig(data: unknown, still: string): Promise<void> {
      await exchange("POST", `${base}config`, { data }, undefined, { still });
    },

    /** What went over an interface after this number; 0: all that is kept. */
    traffic: async (nodeId: number, after: number): Promise<unknown> =>
      (await exchange("GET", `${base}traffic/${nodeId}?after=${after}`)).data,

    /** Sends a content, as a command has it, through an interface. */
    async send(nodeId: number, content: string, contentFormat: number, asciiEncode: number): Promise<void> {
      await exchange("POST", `${base}send`, { nodeId, content, contentFormat, asciiEncode });
    },

    /** Lets the server write the traffic of an interface into a file for some minutes; 0: no longer. */
    writeTrafficFile: async (nodeId: number, minutes: number): Promise<unknown> =>
      (await exchange("POST", `${base}traffic/file`, { nodeId, minutes })).data,
  };
}

export type Equipment = ReturnType<typeof createEquipment>;
