/** The parts of an address behind its hash: "#/edit/p%201" gives "edit" and "p 1". What can't be decoded stays. */
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
