/** How the list of what was found names a place, and why something can't be replaced there. */
import { ta } from "../../i18n/author.ts";
import type { Hit, ReplaceFault } from "../../model/findReplace.ts";
import { nameOfComponent, nameOfTrigger } from "../shell/componentNames.ts";

const kindKeys = {
  pageName: "pageName",
  name: "name",
  look: "text",
  question: "confirmation",
  commandName: "commandName",
  content: "content",
  interfaceName: "throughInterface",
} as const;

/** "On · On release · Content" */
export function placeText({ component, trigger, kind }: Hit): string {
  const words = component
    ? [nameOfComponent(component), ...(trigger === undefined ? [] : [nameOfTrigger(component, trigger)])]
    : [];
  return [...words, ta(kindKeys[kind])].join(" · ");
}

export function faultText(fault: ReplaceFault, after: string): string {
  switch (fault.kind) {
    case "content":
      return `${ta("replaceNot")} ${ta("atColumn", fault.at + 1)} ${ta(`content_${fault.fault}`)}`;
    case "empty":
      return `${ta("replaceNot")} ${ta("replaceEmpty")}`;
    case "long":
      return `${ta("replaceNot")} ${ta("fault_long", fault.most, after.length)}`;
    case "noInterface":
      return `${ta("replaceNot")} ${ta("replaceNoInterface", after)}`;
  }
}
