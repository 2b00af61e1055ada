/** Versions of the documents, in English. The keys are those of every language. */
export const versionsEn = {
  versions: "Versions",
  versionsHint:
    "The server keeps earlier states by itself: before the first save of a day and once an hour. " +
    "Older ones are cleared away; those with a name stay.",
  noVersions: "No version yet",
  noVersionsHint: "The server keeps one before the next save. You can also keep the present state now.",
  keepVersion: "Keep the present state",
  versionName: "Give it a name to keep it for good",
  versionNameOf: "Name of the version of {0}",
  versionEmpty: "No pages at that time.",
  versionUnreadable: "This version can't be shown.",
  versionUnsaved: "Save your changes first, or undo them.",
  morePages: "and {0} more",
  compare: "Compare",
  compareTitle: "What restoring changes: {0}",
  noDifference: "Pages, commands and materials are as they are now.",
  page_returns: "comes back",
  page_goes: "goes away",
  page_changes: "changes",
  interfacesStay: "Interfaces stay as they are now.",
  interfacesLost:
    "These interfaces are gone. Commands for them are listed as problems, and are not sent until you choose another " +
    "interface: {0}",
  restore: "Restore",
  restoreQuestion: "Restore {0}?",
  restoreText:
    "Pages, commands and materials become what they were then, also on the panels. " +
    "What is there now is kept as a version, so you can come back. Interfaces stay as they are. " +
    "The PIN for the author's screens becomes that of then, or none.",
  restored: "Restored. Panels show it within half a minute.",
  restoreUndone: "Taken back.",
  restoreMissing: "Some commands have lost their interface and are not sent: {0}",
};
