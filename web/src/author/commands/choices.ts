/** The names of the endings and encodings of a text, as keys of the dictionary. */
export const terminatorKeys = {
  "": "endNone",
  "\r": "endCr",
  "\n": "endLf",
  "\r\n": "endCrLf",
  "\0": "endNul",
} as const;

/** By their numbers. */
export const encodingKeys = ["encodingUtf8", "encodingOneByte", "encodingGb"] as const;
