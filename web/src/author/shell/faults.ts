/** What ties a field to the sentences about it, so that whoever hears the page hears them with the field. */
import { ta } from "../../i18n/author.ts";

export interface FaultMarks {
  "aria-invalid": true | undefined;
  "aria-describedby": string | undefined;
}

/** Greatest lengths of what authors type, in UTF-16 units. */
export const longest = { name: 80, question: 200 } as const;

/** Why a text is too long for its field; empty when it is not. */
export function lengthFault(text: string, most: number = longest.name): string {
  return text.length > most ? ta("fault_long", most, text.length) : "";
}

/**
 * The attributes of a field.
 * @param id  of the field's `Fault`
 * @param fault  what is wrong; nothing or empty when nothing is
 * @param hint  the id of a sentence that is always there
 */
export function faultMarks(id: string, fault: string | undefined, hint = ""): FaultMarks {
  const described = [hint, fault ? id : ""].filter(Boolean).join(" ");
  return { "aria-invalid": fault ? true : undefined, "aria-describedby": described || undefined };
}
