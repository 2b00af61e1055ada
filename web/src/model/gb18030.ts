/**
 * GB18030. The browser can only decode it. So encoding uses a table, made by decoding every two-byte form once. The
 * four-byte forms of the basic plane fill the gaps in order, and those of the other planes are computed.
 */

let table: Map<number, readonly number[]> | undefined;

const decoder = () => new TextDecoder("gb18030", { fatal: true });

/** The bytes of a character, or nothing when it has none. */
export function encodeGb18030(code: number): readonly number[] | undefined {
  if (code < 0x80) return [code];
  if (code >= 0x10000) return fourBytes(code - 0x10000 + 189_000);
  table ??= makeTable();
  return table.get(code);
}

/** The text of the bytes, or nothing when they are invalid GB18030. */
export function decodeGb18030(bytes: Uint8Array<ArrayBuffer>): string | undefined {
  try {
    return decoder().decode(bytes);
  } catch {
    return undefined;
  }
}

function fourBytes(pointer: number): number[] {
  const low = [10, 126, 10].map((base) => {
    const rest = pointer % base;
    pointer = Math.floor(pointer / base);
    return rest;
  });
  return [0x81 + pointer, 0x30 + low[2]!, 0x81 + low[1]!, 0x30 + low[0]!];
}

function makeTable(): Map<number, readonly number[]> {
  const result = new Map<number, readonly number[]>();
  const add = (bytes: number[]) => {
    const text = decodeGb18030(new Uint8Array(bytes));
    const code = text?.codePointAt(0);
    if (text?.length === 1 && code !== undefined && code >= 0x80 && !result.has(code)) result.set(code, bytes);
  };
  for (let lead = 0x81; lead <= 0xfe; ++lead) {
    for (let trail = 0x40; trail <= 0xfe; ++trail) {
      if (trail !== 0x7f) add([lead, trail]);
    }
  }
  for (let pointer = 0; pointer < 39_420; ++pointer) add(fourBytes(pointer));
  return result;
}
