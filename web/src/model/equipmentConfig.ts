/** The document of what devices are asked, and of what their answers mean. */
import { asArray, asObject, asText } from "./json.ts";

/** The names of all values in a document. */
export function namesInConfig(document: unknown): string[] {
  return asArray(asObject(document)["devices"])
    .flatMap((device) => asArray(asObject(device)["patterns"]))
    .flatMap((pattern) => asArray(asObject(pattern)["values"]))
    .map((value) => asText(asObject(value)["name"]));
}
