/** What ties a field to the sentences about it, so that whoever hears the page hears them with the field. */

export interface FaultMarks {
  "aria-invalid": true | undefined;
  "aria-describedby": string | undefined;
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
