import { toolIcons } from "../shell/toolIcons.ts";

/** The ways to align, in the order in which they are offered. */
export const alignmentIcons = [
  ["left", toolIcons.alignLeft],
  ["center", toolIcons.alignCenter],
  ["right", toolIcons.alignRight],
  ["top", toolIcons.alignTop],
  ["middle", toolIcons.alignMiddle],
  ["bottom", toolIcons.alignBottom],
] as const;
