import { describe, expect, it } from "vitest";
import { decodeTable, readTable, type TableRow, writeTable } from "../../src/model/csv.ts";
import { type DeviceCommand, withDeviceCommands, withRenamedDevice } from "../../src/model/devices.ts";
import { type ColumnRole, guessColumns, readRows, writeDeviceTable } from "../../src/model/deviceTable.ts";
import { newNetInfo } from "../../src/model/interfaces.ts";
import { readWholeLayout } from "../../src/model/wholeLayout.ts";
import { writeLayout } from "../../src/model/wholeLayout.ts";
import { imported, readTransfer, type Transfer, writeTransfer } from "../../src/model/transfer.ts";
import { sampleProject } from "../support/projects.ts";

const rowsOf = (text: string) => {
  const table = readTable(text);
  return "rows" in table ? table.rows : [];
};
const cells = (text: string) => rowsOf(text).map((row) => row.cells);
const tableOf = (rows: string[][]): TableRow[] => rows.map((row, at) => ({ line: at + 1, cells: row }));

describe("a table", () => {
  it.each([
    [
      "commas",
      "a,b\nc,d",
      [
        ["a", "b"],
        ["c", "d"],
      ],
    ],
    [
      "semicolons, with commas in cells",
      "On;A,B\r\nOff;C,D\r\n",
      [
        ["On", "A,B"],
        ["Off", "C,D"],
      ],
    ],
    [
      "tabs",
      "On\t1,2;3\nOff\t4",
      [
        ["On", "1,2;3"],
        ["Off", "4"],
      ],
    ],
    ["a byte order mark", "\ufeffa,b", [["a", "b"]]],
    [
      "old line ends",
      "a,b\rc,d",
      [
        ["a", "b"],
        ["c", "d"],
      ],
    ],
    ["quotes", '"a ""x""","b,\r\nc"', [['a "x"', "b,\r\nc"]]],
    ["a quote after a blank", '"a", "b"', [["a", "b"]]],
    ["a quote within a cell", 'say "hi",b', [['say "hi"', "b"]]],
    [
      "empty lines and cells",
      "a,,c\n\n,,\nd,e",
      [
        ["a", "", "c"],
        ["d", "e"],
      ],
    ],
    ["formulas behind an apostrophe", "'=1+1,'-5,''=x,'plain", [["=1+1", "-5", "'=x", "'plain"]]],
    ["nothing", "\n", []],
  ])("of %s", (_, text, expected) => expect(cells(text)).toEqual(expected));

  it("names the line of a quotation mark that is not closed, and of rows behind cells of several lines", () => {
    expect(readTable('a,b\n"c,d\ne')).toEqual({ unclosed: 2 });
    expect(rowsOf('"a\nb",c\n\nd,e').map((row) => row.line)).toEqual([1, 4]);
  });

  it.each([[["plain", "a,b", 'say "hi"', " blank", "two\r\nlines", "=SUM(A1)", "+1", "-1", "@x", "'=x", "'", ""]]])(
    "comes back from what was written: %j",
    (row) => {
      const text = writeTable([row]);
      expect(cells(text)).toEqual([row]);
      expect(
        text
          .replace(/^\ufeff/, "")
          .split(",")
          .filter((cell) => /^"?[=+\-@]/.test(cell)),
      ).toEqual([]);
    },
  );

  it.each([
    ["UTF-8", [0xef, 0xbb, 0xbf, 0xe5, 0xbc, 0x80]],
    ["GB18030", [0xbf, 0xaa]],
    ["UTF-16", [0xff, 0xfe, 0x00, 0x5f]],
  ])("is decoded from %s", (_, bytes) => expect(decodeTable(new Uint8Array(bytes))).toBe("开"));
});

it.each([
  [
    "by headings",
    [
      ["Code", "Note", "Command"],
      ["x", "", "y"],
    ],
    ["content", "skip", "name"],
    true,
  ],
  ["by Chinese headings", [["名称", "内容", "格式"]], ["name", "content", "format"], true],
  [
    "by their order",
    [
      ["On", "1"],
      ["Off", "2", "hex", "?"],
    ],
    ["name", "content", "format", "skip"],
    false,
  ],
])("columns are told %s", (_, rows, roles, hasHeadings) => {
  expect(guessColumns(tableOf(rows))).toEqual({ roles, hasHeadings });
});

const roles: ColumnRole[] = ["name", "content", "format", "ending", "encoding"];
const defaults = { contentFormat: 0, ending: "\r", asciiEncode: 0 };
const read = (...row: string[]) => readRows(tableOf([row]), roles, defaults, 20);

it.each<[string, string[], Partial<DeviceCommand>]>([
  ["defaults", ["On", "PWR ON"], { content: "PWR ON\r", contentFormat: 0, asciiEncode: 0 }],
  ["escapes", ["On", "\\x02A\\n", "TEXT", "none"], { content: "\x02A\n" }],
  ["hexadecimal without an ending", ["On", " 0x1B ", "Hex", "CR"], { content: "0x1B", contentFormat: 1 }],
  ["other words", ["On", "ä", "ASCII", "CR+LF", "ISO-8859-1"], { content: "ä\r\n", asciiEncode: 1 }],
  ["a slider's number", ["Vol", "A0 {value}", "hex"], { content: "A0 {value}", contentFormat: 1 }],
])("a row with %s", (_, row, expected) => expect(read(...row).commands).toMatchObject([expected]));

it.each([
  [["", "x"], { kind: "noName" }],
  [["A name that is far too long", "x"], { kind: "longName", length: 27 }],
  [["On", " "], { kind: "noContent" }],
  [["On", "x", "binary"], { kind: "format", value: "binary" }],
  [["On", "x", "text", "EOT"], { kind: "ending", value: "EOT" }],
  [["On", "x", "text", "", "EBCDIC"], { kind: "encoding", value: "EBCDIC" }],
  [["On", "1B 0", "hex"], undefined],
  [["On", "1B 0D0", "hex"], { kind: "content", fault: "odd", at: 3 }],
  [["On", "a\\q"], { kind: "content", fault: "escape", at: 1 }],
  [["On", "\\\\开", "", "", "one byte"], { kind: "content", fault: "character", at: 2 }],
])("the row %j is answered with %j", (row, fault) => {
  expect(read(...row).faulty.map((one) => one.fault)).toEqual(fault ? [fault] : []);
});

const commands: DeviceCommand[] = [
  { name: '=On, "now"', content: "-PWR\\ON\x02\r\n", contentFormat: 0, asciiEncode: 1 },
  { name: "Off", content: "1B 0D", contentFormat: 1, asciiEncode: 0 },
  { name: "Wake", content: "\r", contentFormat: 0, asciiEncode: 2 },
];

it("a list comes back from its table, whatever the defaults are", () => {
  const rows = rowsOf(writeDeviceTable(commands));
  const { roles, hasHeadings } = guessColumns(rows);
  const other = { contentFormat: 1, ending: "\n", asciiEncode: 2 };
  expect(readRows(rows.slice(Number(hasHeadings)), roles, other, 80)).toEqual({ commands, faulty: [] });
});

it("lists are kept in the layout, follow a new name, and go along with a page to another server", () => {
  const project = sampleProject();
  const layout = withDeviceCommands(project.layout, "Projector", commands);
  expect(readWholeLayout(JSON.parse(JSON.stringify(writeLayout(layout))))).toEqual(layout);
  expect(withRenamedDevice(layout, "Projector", "Beamer").devices).toEqual([{ interfaceName: "Beamer", commands }]);
  expect(withDeviceCommands(layout, "Projector", [])).toEqual(project.layout);

  const projector = {
    nodeId: 1,
    controlType: "netPortInfo" as const,
    info: { ...newNetInfo, netPortName: "Projector" },
  };
  const other = withDeviceCommands(layout, "Relay", commands);
  const file = readTransfer(
    writeTransfer({ ...project, layout: other }, [projector], project.layout.pages[0]),
  ) as Transfer;
  expect(imported(project, file, [projector]).layout.devices).toEqual(layout.devices);
});
