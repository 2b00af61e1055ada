import type { versionsEn } from "./versions.en.ts";

/** Versions of the documents, in Chinese. */
export const versionsZh: Record<keyof typeof versionsEn, string> = {
  versions: "版本",
  versionsHint:
    "服务器会自动保留先前的状态：每天首次保存之前，以及每小时一次。较早的版本会被清理，已命名的版本会保留。",
  noVersions: "还没有版本",
  noVersionsHint: "服务器会在下次保存之前保留一个版本。您也可以现在保留当前状态。",
  keepVersion: "保留当前状态",
  versionName: "命名后将长期保留",
  versionNameOf: "{0} 版本的名称",
  versionEmpty: "当时没有页面。",
  versionUnreadable: "无法显示该版本。",
  versionUnsaved: "请先保存或撤销您的更改。",
  morePages: "还有 {0} 个",
  compare: "比较",
  compareTitle: "恢复后的变化：{0}",
  noDifference: "页面、命令和素材与当前一致。",
  page_returns: "将恢复",
  page_goes: "将移除",
  page_changes: "将更改",
  interfacesStay: "接口保持现状。",
  interfacesLost: "以下接口已不存在。它们的命令会列为问题，在您选择其他接口之前不会发送：{0}",
  restore: "恢复",
  restoreQuestion: "恢复 {0}？",
  restoreText:
    "页面、命令和素材将恢复为当时的状态，面板也会随之更新。当前状态会保留为一个版本，您可以随时返回。接口保持不变，编辑界面的 PIN 码恢复为当时的设置。",
  restored: "已恢复。面板将在半分钟内更新。",
  restoreUndone: "已撤回。",
  restoreMissing: "部分命令失去了接口，不会发送：{0}",
};
