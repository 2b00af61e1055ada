import { blocksZh } from "./author/blocks.zh.ts";
import { commandsZh } from "./author/commands.zh.ts";
import { devicesZh } from "./author/devices.zh.ts";
import { editorZh } from "./author/editor.zh.ts";
import { findZh } from "./author/find.zh.ts";
import { interfacesZh } from "./author/interfaces.zh.ts";
import { keysZh } from "./author/keys.zh.ts";
import { looksZh } from "./author/looks.zh.ts";
import { lockZh } from "./author/lock.zh.ts";
import { materialsZh } from "./author/materials.zh.ts";
import { pagesZh } from "./author/pages.zh.ts";
import { phoneZh } from "./author/phone.zh.ts";
import { settingsZh } from "./author/settings.zh.ts";
import { shellZh } from "./author/shell.zh.ts";
import { valuesZh } from "./author/values.zh.ts";
import { versionsZh } from "./author/versions.zh.ts";
import { watchingZh } from "./author/watching.zh.ts";
import type { authorEn } from "./author.en.ts";

/** The author's part in Chinese. */
export const authorZh: Record<keyof typeof authorEn, string> = {
  ...shellZh,
  ...pagesZh,
  ...findZh,
  ...versionsZh,
  ...interfacesZh,
  ...devicesZh,
  ...looksZh,
  ...materialsZh,
  ...settingsZh,
  ...lockZh,
  ...editorZh,
  ...blocksZh,
  ...phoneZh,
  ...commandsZh,
  ...valuesZh,
  ...watchingZh,
  ...keysZh,
};
