import { describe, expect, it } from "vitest";
import vectors from "../../../tests/comm/content_vectors.json" with { type: "json" };
import { bytesToHex, bytesToText, bytesToVisible, contentToBytes, isFault } from "../../src/model/content.ts";
import { escapeText, placeInNotation, splitTerminator, unescapeText } from "../../src/model/escapes.ts";

describe("content to bytes, by the server's own vectors", () => {
  it.each(vectors)("$name", ({ content, contentFormat, asciiEncode, bytes }) => {
    const made = contentToBytes(content, contentFormat, asciiEncode);
    expect(isFault(made) ? "error" : bytesToHex(made).replaceAll(" ", "")).toBe(bytes ?? "error");
  });
});

// A pasted file: neither too many arguments for a call, nor a search to the end for each token.
describe("long content", () => {
  it.each(["00", "$0", "00 ", "\\x0"])("of 300,000 times %j", (token) => {
    const made = contentToBytes(token.repeat(300000), 1, 0);
    expect(!isFault(made) && made.length === 300000 && made.every((byte) => byte === 0)).toBe(true);
  });

  it("comes back as text", () => {
    expect(bytesToText(new Uint8Array(300000), 1)).toBe("\0".repeat(300000));
  });
});

describe("the place of a fault", () => {
  it.each([
    { content: "okay 开", format: 0, encode: 1, fault: "character", at: 5 },
    { content: "a\ud800b", format: 0, encode: 0, fault: "surrogate", at: 1 },
    { content: "1B 0D0", format: 1, encode: 0, fault: "odd", at: 3 },
    { content: "41 G1", format: 1, encode: 0, fault: "digit", at: 3 },
    { content: "4G", format: 1, encode: 0, fault: "digit", at: 1 },
  ])("$fault at $at of $content", ({ content, format, encode, fault, at }) => {
    expect(contentToBytes(content, format, encode)).toEqual({ fault, at });
  });
});

describe("the editor's notation", () => {
  it.each([
    ["PWR ON\\r\\n", "PWR ON\r\n"],
    ["\\x02A\\x03\\0", "\x02A\x03\0"],
    ["\\u5f00\\\\r", "开\\r"],
  ])("%s", (notation, text) => {
    expect(unescapeText(notation)).toBe(text);
  });

  it.each([
    ["a\\q", 1],
    ["\\x1", 0],
    ["ab\\u12G4", 2],
    ["end\\", 3],
    ["\\x+1", 0],
  ])("refuses %s", (notation, at) => {
    expect(unescapeText(notation)).toEqual({ fault: "escape", at });
  });

  it("comes back from every text", () => {
    for (const text of ["", "\\", "\\r", "a\0\x7f\x80\u200b\ufeff", "开\ud83d\ude00", "\ud800x", "\r\n\t"]) {
      expect(unescapeText(escapeText(text))).toBe(text);
    }
  });

  it("finds the place of a character of the text", () => {
    expect([0, 1, 2, 3].map((at) => placeInNotation("a\\r\\x41\\u5f00", at))).toEqual([0, 1, 3, 7]);
  });

  it.each([
    ["A\r\n", "A", "\r\n"],
    ["A\n\r", "A\n", "\r"],
    ["A", "A", ""],
    ["\0", "", "\0"],
  ])("splits the end off %j", (content, body, terminator) => {
    expect(splitTerminator(content)).toEqual({ body, terminator });
  });
});

describe("bytes back to text: without loss or not at all", () => {
  it.each([
    [[0x41, 0x0d], 0, "A\r"],
    [[0xff], 0, undefined],
    [[0xef, 0xbb, 0xbf, 0x41], 0, "\ufeffA"],
    [[0x00, 0xff], 1, "\0\xff"],
    [[0xbf, 0xaa, 0x81, 0x30, 0x81, 0x30], 2, "开\x80"],
    [[0xbf], 2, undefined],
    [[0x80], 2, undefined],
  ])("%j in encoding %i", (bytes, encode, text) => {
    expect(bytesToText(new Uint8Array(bytes), encode)).toBe(text);
  });

  it("shows what can be seen", () => {
    expect(bytesToVisible(new Uint8Array([0x41, 0x0d, 0x7e, 0xff]))).toBe("A·~·");
  });
});
