import { codes, ServerError, type Stored } from "../../src/api/server.ts";
import { type Project, writeProject } from "../../src/model/project.ts";

type Name = "layout" | "materials" | "interactions";

/** The documents, the interfaces and the clicks of a server, kept here. A write names the state that it replaces. */
export class FakeServer {
  /** What was written and clicked, in order. */
  readonly calls: string[] = [];
  interfaceIds: number[] = [1];
  /** Happens before each call. What it throws is what becomes of the call. */
  before: (call: string) => void = () => undefined;
  #tag = 0;
  readonly #documents: Record<Name, Stored> = {
    layout: { data: null, tag: "" },
    materials: { data: { materialList: [] }, tag: "" },
    interactions: { data: null, tag: "" },
  };

  /** It is away for calls whose name has this in it. */
  cutOff(part: string): void {
    this.before = (call) => {
      if (call.includes(part)) throw new ServerError(codes.unreachable);
    };
  }

  /** This happens once, when a call of that name comes in. */
  during(name: string, act: () => void): void {
    this.before = (call) => {
      if (call !== name) return;
      this.before = () => undefined;
      act();
    };
  }

  /** The names of the stored pages. */
  get pageNames(): string[] {
    return (this.get("layout") as { pages: { name: string }[] }).pages.map((page) => page.name);
  }

  /** Stores a project, as somebody else does. */
  put(project: Project): void {
    for (const [name, data] of Object.entries(writeProject(project))) this.#set(name as Name, data);
  }

  set(name: Name, data: unknown): void {
    this.#set(name, data);
  }

  get(name: Name): unknown {
    return this.#documents[name].data;
  }

  layout = () => this.#read("layout");
  materials = () => this.#read("materials");
  interactions = () => this.#read("interactions");
  storeLayout = (data: unknown, still?: string) => this.#store("layout", data, still);
  storeMaterials = (data: unknown, still?: string) => this.#store("materials", data, still);
  storeInteractions = (data: unknown, still?: string) => this.#store("interactions", data, still);

  interfaces = () =>
    this.#answer("read interfaces", () => ({
      configList: this.interfaceIds.map((nodeId) => ({
        nodeId,
        controlType: "netPortInfo",
        netPortInfo: { netPortName: `device ${nodeId}`, dstIpAddress: "10.0.0.7" },
      })),
    }));

  click = (componentId: number, trigger: string) =>
    this.#answer(`click ${componentId} ${trigger}`, () => this.calls.push(`click ${componentId} ${trigger}`));

  #read(name: Name): Promise<Stored> {
    return this.#answer(`read ${name}`, () => this.#documents[name]);
  }

  #store(name: Name, data: unknown, still?: string): Promise<string> {
    return this.#answer(`write ${name}`, () => {
      if (still && still !== this.#documents[name].tag) throw new ServerError(codes.changed);
      this.calls.push(name);
      return this.#set(name, data);
    });
  }

  #set(name: Name, data: unknown): string {
    const tag = `"${++this.#tag}"`;
    this.#documents[name] = { data: JSON.parse(JSON.stringify(data)) as unknown, tag };
    return tag;
  }

  async #answer<Value>(call: string, act: () => Value): Promise<Value> {
    await Promise.resolve();
    this.before(call);
    return act();
  }
}
