import { afterEach, expect, it, vi } from "vitest";

/** Those that start the two parts are left out; what a component does, it does when it is made. */
const modules = import.meta.glob(["../../src/**/*.ts", "!**/main.ts", "!**/start.ts", "!**/*.d.ts"]);

/** Bound against a hang, in ms: the modules are compiled for this test. */
const longest = 60_000;

let touched: string[] = [];

/** Stands for an object, a class or a function of the browser, and notes that it was used. */
function guard(name: string): object {
  const use = () => {
    touched.push(name);
    return {};
  };
  return new Proxy(vi.fn(), { get: use, set: () => (use(), true), apply: use, construct: use });
}

afterEach(() => {
  vi.unstubAllGlobals();
});

it(
  "modules only declare: before something is called there is no socket, storage, request or listener",
  async () => {
    const storage = ["localStorage", "sessionStorage", "indexedDB"];
    const page = ["location", "navigator", "addEventListener", "matchMedia"];
    const network = ["WebSocket", "BroadcastChannel", "fetch"];
    [...storage, ...page, ...network].forEach((name) => vi.stubGlobal(name, guard(name)));
    for (const [path, load] of Object.entries(modules)) {
      touched = [];
      await load();
      expect(touched, path).toEqual([]);
    }
    expect(Object.keys(modules)).toContain("../../src/author/project/store.svelte.ts");
  },
  longest,
);
