/** Assigning commands that come from elsewhere or from another time to the interfaces that are here. */
import { type Command, type Interactions, mapCommands } from "./interactions.ts";
import { type Interface, interfaceName } from "./interfaces.ts";

/**
 * The commands given to the present interfaces of the names that they say. Commands without one keep a node id that
 * nobody has (a negative one), so that the problems list shows them.
 */
export function fittedCommands(
  interactions: Interactions,
  here: readonly Interface[],
  nameOf: (command: Command) => string = (command) => command.interfaceName,
): Interactions {
  const byName = new Map(here.map((one) => [interfaceName(one), one]));
  return mapCommands(interactions, (command) => {
    const name = nameOf(command);
    const found = byName.get(name);
    if (!found) return { ...command, portIndex: -Math.abs(command.portIndex) || -1, interfaceName: name };
    return { ...command, portIndex: found.nodeId, controlType: found.controlType, interfaceName: name };
  });
}
