import { blocksEn } from "./author/blocks.en.ts";
import { commandsEn } from "./author/commands.en.ts";
import { devicesEn } from "./author/devices.en.ts";
import { editorEn } from "./author/editor.en.ts";
import { findEn } from "./author/find.en.ts";
import { interfacesEn } from "./author/interfaces.en.ts";
import { keysEn } from "./author/keys.en.ts";
import { looksEn } from "./author/looks.en.ts";
import { lockEn } from "./author/lock.en.ts";
import { materialsEn } from "./author/materials.en.ts";
import { pagesEn } from "./author/pages.en.ts";
import { phoneEn } from "./author/phone.en.ts";
import { settingsEn } from "./author/settings.en.ts";
import { shellEn } from "./author/shell.en.ts";
import { valuesEn } from "./author/values.en.ts";
import { versionsEn } from "./author/versions.en.ts";
import { watchingEn } from "./author/watching.en.ts";

/** The author's part in English. Its keys are those of every language. */
export const authorEn = {
  ...shellEn,
  ...pagesEn,
  ...findEn,
  ...versionsEn,
  ...interfacesEn,
  ...devicesEn,
  ...looksEn,
  ...materialsEn,
  ...settingsEn,
  ...lockEn,
  ...editorEn,
  ...blocksEn,
  ...phoneEn,
  ...commandsEn,
  ...valuesEn,
  ...watchingEn,
  ...keysEn,
};
