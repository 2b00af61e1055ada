/** Resolves when everything has happened that needs no more than promises which are fulfilled already. */
export function settled(): Promise<void> {
  return new Promise((done) => setImmediate(done));
}
