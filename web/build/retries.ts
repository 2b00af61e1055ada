import type { Reporter } from "vitest/node";

/** Prints how often a test was tried again after a failure, so that one that fails now and then is seen. */
export const retries: Reporter = {
  onTestRunEnd(modules) {
    let count = 0;
    for (const module of modules) {
      for (const test of module.children.allTests()) {
        const again = test.diagnostic()?.retryCount ?? 0;
        if (again > 0) console.log(`Tried again: ${test.fullName}`);
        count += again;
      }
    }
    console.log(`Retries: ${count}`);
  },
};
