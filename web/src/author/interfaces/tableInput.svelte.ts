/** A table on its way to a device's list: the text, what its columns are, and what is read from it. */
import { readTable } from "../../model/csv.ts";
import { type ColumnRole, guessColumns, readRows, type TableDefaults } from "../../model/deviceTable.ts";
import { longest } from "../shell/faults.ts";

/** Greatest length of a table, in UTF-16 units. */
export const mostText = 1_000_000;

export class TableInput {
  #text = $state("");
  #roles = $state.raw<readonly ColumnRole[]>([]);
  hasHeadings = $state(false);
  defaults = $state<TableDefaults>({ contentFormat: 0, ending: "", asciiEncode: 0 });

  readonly table = $derived(this.#text.length > mostText ? { tooLong: true as const } : readTable(this.#text));
  /** The rows of commands, without the headings. */
  readonly rows = $derived("rows" in this.table ? this.table.rows.slice(this.hasHeadings ? 1 : 0) : []);
  readonly read = $derived(readRows(this.rows, this.#roles, this.defaults, longest.name));

  get text(): string {
    return this.#text;
  }

  /** Another text: its columns are guessed anew. */
  set text(text: string) {
    this.#text = text;
    const { roles, hasHeadings } = guessColumns("rows" in this.table ? this.table.rows : []);
    this.#roles = roles;
    this.hasHeadings = hasHeadings;
  }

  get roles(): readonly ColumnRole[] {
    return this.#roles;
  }

  /** Another column that had this role gets none. */
  setRole(column: number, role: ColumnRole): void {
    this.#roles = this.#roles.map((one, at) => (at === column ? role : one === role ? "skip" : one));
  }
}
