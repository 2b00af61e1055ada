/** The commands of a device as a table: which column is what, the commands in its rows, and the table of a list. */
import { type ContentFault, contentToBytes, isFault } from "./content.ts";
import { type TableRow, writeTable } from "./csv.ts";
import type { DeviceCommand } from "./devices.ts";
import { escapeText, notationOf, placeInNotation, splitTerminator, unescapeText } from "./escapes.ts";
import { withoutPlaceholders } from "./interactions.ts";

export const columnRoles = ["name", "content", "format", "ending", "encoding", "skip"] as const;
export type ColumnRole = (typeof columnRoles)[number];

/** What counts where a row says nothing itself. */
export interface TableDefaults {
  readonly contentFormat: number;
  /** Of text: the terminating characters. */
  readonly ending: string;
  readonly asciiEncode: number;
}

export type RowFault =
  | { readonly kind: "noName" | "noContent" }
  | { readonly kind: "longName"; readonly length: number }
  | { readonly kind: "format" | "ending" | "encoding"; readonly value: string }
  | { readonly kind: "content"; readonly fault: ContentFault; readonly at: number };

export interface FaultyRow {
  readonly line: number;
  readonly fault: RowFault;
}

const headings: Record<Exclude<ColumnRole, "skip">, readonly string[]> = {
  name: ["name", "command", "commandname", "function", "label", "名称", "命令", "命令名称", "功能"],
  content: ["content", "code", "data", "string", "bytes", "内容", "代码", "指令", "数据"],
  format: ["format", "type", "格式", "类型"],
  ending: ["ending", "endswith", "terminator", "结尾", "结束符"],
  encoding: ["encoding", "charset", "编码"],
};

const formats = new Map([
  ...["text", "txt", "ascii", "string", "文本", "字符"].map((word) => [word, 0] as const),
  ...["hex", "hexadecimal", "十六进制", "16进制"].map((word) => [word, 1] as const),
]);
const encodings = new Map([
  ...["utf8"].map((word) => [word, 0] as const),
  ...["onebyte", "latin1", "iso88591", "单字节"].map((word) => [word, 1] as const),
  ...["gb18030", "gbk", "gb2312"].map((word) => [word, 2] as const),
]);
const endings = new Map([
  ...["none", "无"].map((word) => [word, ""] as const),
  ...["cr", "\\r"].map((word) => [word, "\r"] as const),
  ...["lf", "\\n"].map((word) => [word, "\n"] as const),
  ...["crlf", "\\r\\n"].map((word) => [word, "\r\n"] as const),
  ...["nul", "null", "\\0"].map((word) => [word, "\0"] as const),
]);

const plain = (cell: string) => cell.toLowerCase().replace(/[\s_+-]/g, "");

/** What the columns are, by the first row where that names them, otherwise by their order. */
export function guessColumns(rows: readonly TableRow[]): { roles: ColumnRole[]; hasHeadings: boolean } {
  const width = rows.reduce((most, row) => Math.max(most, row.cells.length), 0);
  const first = rows[0]?.cells.map(plain) ?? [];
  const named = first.map((cell) => columnRoles.find((role) => role !== "skip" && headings[role].includes(cell)));
  const hasHeadings = named.includes("name") && named.includes("content");
  const order = columnRoles.slice(0, 3);
  const roles = Array.from({ length: width }, (_, at) => {
    const role = hasHeadings ? named[at] : order[at];
    return role && !(hasHeadings && named.indexOf(role) < at) ? role : "skip";
  });
  return { roles, hasHeadings };
}

/**
 * The commands in the rows, and what is wrong with the others.
 * @param mostName  greatest length of a name
 */
export function readRows(
  rows: readonly TableRow[],
  roles: readonly ColumnRole[],
  defaults: TableDefaults,
  mostName: number,
): { commands: DeviceCommand[]; faulty: FaultyRow[] } {
  const commands: DeviceCommand[] = [];
  const faulty: FaultyRow[] = [];
  for (const { line, cells } of rows) {
    const cellOf = (role: ColumnRole) => cells[roles.indexOf(role)] ?? "";
    const read = readRow(cellOf, defaults, mostName);
    if ("kind" in read) faulty.push({ line, fault: read });
    else commands.push(read);
  }
  return { commands, faulty };
}

function readRow(
  cellOf: (role: ColumnRole) => string,
  defaults: TableDefaults,
  mostName: number,
): DeviceCommand | RowFault {
  /** What a cell of few possible words means; nothing for another word. */
  const oneOf = <Value>(role: ColumnRole, words: ReadonlyMap<string, Value>, otherwise: Value) =>
    cellOf(role).trim() === "" ? otherwise : words.get(plain(cellOf(role)));
  const name = cellOf("name").trim();
  const contentFormat = oneOf("format", formats, defaults.contentFormat);
  const ending = oneOf("ending", endings, defaults.ending);
  const asciiEncode = oneOf("encoding", encodings, defaults.asciiEncode);
  if (!name) return { kind: "noName" };
  if (name.length > mostName) return { kind: "longName", length: name.length };
  if (cellOf("content").trim() === "") return { kind: "noContent" };
  if (contentFormat === undefined) return { kind: "format", value: cellOf("format") };
  if (ending === undefined) return { kind: "ending", value: cellOf("ending") };
  if (asciiEncode === undefined) return { kind: "encoding", value: cellOf("encoding") };

  const notation = cellOf("content");
  const body = contentFormat === 0 ? unescapeText(notation) : notation.trim();
  if (isFault(body)) return { kind: "content", ...body };
  const content = contentFormat === 0 ? body + ending : body;
  const bytes = contentToBytes(withoutPlaceholders({ content, contentFormat }), contentFormat, asciiEncode);
  if (!isFault(bytes)) return { name, content, contentFormat, asciiEncode };
  const at = contentFormat === 0 ? placeInNotation(notation, bytes.at) : bytes.at;
  return { kind: "content", fault: bytes.fault, at };
}

/** The list as a table, which `readRows` reads whatever the defaults are. */
export function writeDeviceTable(commands: readonly DeviceCommand[]): string {
  const endingNames: Record<string, string> = { "": "none", "\r": "CR", "\n": "LF", "\r\n": "CR LF", "\0": "NUL" };
  const encodingNames = ["UTF-8", "one byte", "GB18030"];
  const rows = commands.map(({ name, content, contentFormat, asciiEncode }) => {
    const { body, terminator } = contentFormat === 0 ? splitTerminator(content) : { body: content, terminator: "" };
    // A content of terminators alone stays in its own column, which is never empty.
    const isWhole = contentFormat !== 0 || body.trim() === "";
    const cells = isWhole
      ? [notationOf({ content, contentFormat }), "none"]
      : [escapeText(body), endingNames[terminator]!];
    return [name, cells[0]!, contentFormat === 0 ? "text" : "hex", cells[1]!, encodingNames[asciiEncode]!];
  });
  return writeTable([["Name", "Content", "Format", "Ending", "Encoding"], ...rows]);
}
