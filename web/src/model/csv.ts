/**
 * Tables as text: separated by commas, semicolons or tabs, as spreadsheets save them and put them on the clipboard.
 * Cells that a spreadsheet would take for a formula get an apostrophe in front, which reading takes away again.
 */

export interface TableRow {
  /** Line of the text in which the row begins, from 1. */
  readonly line: number;
  readonly cells: readonly string[];
}

/** The rows that have content, or the line in which a quotation mark is opened and never closed. */
export type Table = { readonly rows: readonly TableRow[] } | { readonly unclosed: number };

const separators = ["\t", ";", ","];

/** A formula for a spreadsheet, or a text that is one behind apostrophes. */
const formula = /^'*[=+\-@\t\r]/;

/** The text of a file: UTF-8, UTF-16 with a byte order mark, or GB18030 where it is no UTF-8. */
export function decodeTable(bytes: Uint8Array): string {
  if (bytes[0] === 0xff && bytes[1] === 0xfe) return new TextDecoder("utf-16le").decode(bytes);
  try {
    return new TextDecoder("utf-8", { fatal: true }).decode(bytes);
  } catch {
    return new TextDecoder("gb18030").decode(bytes);
  }
}

export function readTable(text: string): Table {
  const content = text.replace(/^\ufeff/, "");
  const tables = separators.map((separator) => split(content, separator));
  // The separator that gives the most cells in the first row: a tab in a text of commas stands in a cell.
  const width = (table: Table) => ("rows" in table ? (table.rows[0]?.cells.length ?? 0) : 0);
  return tables.reduce((best, table) => (width(table) > width(best) ? table : best));
}

function split(text: string, separator: string): Table {
  const rows: TableRow[] = [];
  let cells: string[] = [];
  let cell = "";
  let line = 1;
  let start = 1;
  let opened = 0;
  const endRow = () => {
    cells.push(cell);
    if (cells.some((one) => one.trim() !== "")) rows.push({ line: start, cells: cells.map(withoutMark) });
    [cells, cell] = [[], ""];
  };
  for (let at = 0; at < text.length; ++at) {
    const character = text[at]!;
    if (character === "\n" || (character === "\r" && text[at + 1] !== "\n")) ++line;
    if (opened) {
      if (character !== '"') cell += character;
      else if (text[at + 1] === '"') cell += text[++at]!;
      else opened = 0;
    } else if (character === '"' && cell.trim() === "") {
      [cell, opened] = ["", line];
    } else if (character === separator) {
      cells.push(cell);
      cell = "";
    } else if (character === "\r" || character === "\n") {
      if (character === "\r" && text[at + 1] === "\n") continue;
      endRow();
      start = line;
    } else {
      cell += character;
    }
  }
  if (opened) return { unclosed: opened };
  endRow();
  return { rows };
}

function withoutMark(cell: string): string {
  return cell.startsWith("'") && formula.test(cell) ? cell.slice(1) : cell;
}

/** The rows with commas, in a form that spreadsheets open as a table of texts. */
export function writeTable(rows: readonly (readonly string[])[]): string {
  return `\ufeff${rows.map((cells) => `${cells.map(writeCell).join(",")}\r\n`).join("")}`;
}

function writeCell(text: string): string {
  const cell = formula.test(text) ? `'${text}` : text;
  return /[",;\t\r\n]|^\s|\s$/.test(cell) ? `"${cell.replaceAll('"', '""')}"` : cell;
}
