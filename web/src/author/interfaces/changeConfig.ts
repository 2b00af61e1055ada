import type { Equipment } from "../../api/equipment.ts";
import { codes, ServerError } from "../../api/server.ts";

/** Somebody else may store in between as often. */
const attempts = 4;

/**
 * Changes the document of what devices are asked. What others store meanwhile is not lost: the change is then made to
 * their document.
 */
export async function changeConfig(
  equipment: Pick<Equipment, "config" | "storeConfig">,
  change: (document: unknown) => unknown,
): Promise<void> {
  for (let attempt = 1; ; ++attempt) {
    const { data, tag } = await equipment.config();
    try {
      await equipment.storeConfig(change(data), tag);
      return;
    } catch (error) {
      if (!(error instanceof ServerError && error.code === codes.changed) || attempt === attempts) throw error;
    }
  }
}
