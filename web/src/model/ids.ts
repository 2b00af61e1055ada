/**
 * Random ids. Two of them have to differ almost certainly, since two authors can add to one document at the same time.
 * `crypto.randomUUID` can't be used: browsers withhold it on pages that came over plain HTTP by host name.
 */

/** Id of a component: a positive whole number of 31 bits, as the server's command map takes it. */
export function newComponentId(): number {
  const [value = 1] = crypto.getRandomValues(new Uint32Array(1));
  return value & 0x7fffffff || 1;
}

/** Id of a page, a material, a group or a block: a letter for the kind, then ten characters. */
export function newId(kind: "p" | "m" | "g" | "t" | "b"): string {
  const values = crypto.getRandomValues(new Uint8Array(10));
  return kind + [...values].map((value) => (value % 36).toString(36)).join("");
}
