/** The parts of an address after its hash: "#/edit/p%201" gives "edit" and "p 1". Parts that can't be decoded stay. */
export function hashParts(hash: string): string[] {
  return hash.replace(/^#\/?/, "").split("/").map(decoded);
}

function decoded(part: string): string {
  try {
    return decodeURIComponent(part);
  } catch {
    return part;
  }
}
