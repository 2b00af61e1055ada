/** Upper bound of every wait for something that must happen, in ms: a guard against hangs, never a measure. */
export const longest = 20_000;

/** Asks again and again until there is something. @throws when the bound was reached first */
export async function waitFor<Value>(
  what: string | (() => string),
  ask: () => Value | Promise<Value>,
): Promise<NonNullable<Value>> {
  const end = Date.now() + longest;
  for (;;) {
    const value = await ask();
    if (value) return value;
    if (Date.now() > end) throw new Error(`waited too long for ${typeof what === "string" ? what : what()}`);
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
}
