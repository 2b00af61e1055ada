/** Interfaces that come back after they were deleted: by undo, or as new ones of the same name. */
import { ta } from "../../i18n/author.ts";
import { type Interface, interfaceName } from "../../model/interfaces.ts";
import { commandUses, withMovedCommands } from "../../model/uses.ts";
import type { Application } from "../application.ts";
import { changeAndTell } from "../shell/changeAndTell.ts";
import { refusalText } from "./refusals.ts";

const named = ({ store }: Application, name: string) => store.interfaces.find((one) => interfaceName(one) === name);

/** Says that an interface was deleted, beside a button that brings it back as long as nothing else has its name. */
export function offerReturn(app: Application, gone: Interface): void {
  const name = interfaceName(gone);
  const holds = () => !named(app, name);
  app.notices.tell("plain", ta("interfaceDeleted", name), {
    label: ta("undo"),
    run: () => void bringBack(app, gone),
    holds,
  });
}

/**
 * Adds a deleted interface with its old settings, and gives it its commands. The server tries it first: while its device
 * can't be reached, the offer stays.
 */
async function bringBack(app: Application, gone: Interface): Promise<void> {
  const { server, store, notices } = app;
  const name = interfaceName(gone);
  try {
    await server.addInterface(gone.controlType, gone.info);
    await store.reloadInterfaces();
  } catch (error) {
    notices.tell("bad", refusalText(error, gone, notices), {
      label: ta("tryAgain"),
      run: () => void bringBack(app, gone),
      holds: () => !named(app, name),
      stays: true,
    });
    return;
  }
  // The store may have put the commands under the negative id meanwhile, which no interface ever gets.
  if (!takeOver(app, [gone.nodeId, -gone.nodeId], name)) notices.tell("good", ta("interfaceStored", name));
}

/** Offers the commands of deleted interfaces to a new one of the same name. */
export function offerCommands(app: Application, name: string): void {
  const { store, notices } = app;
  const lost = commandUses(store.project)
    .map(({ command }) => command)
    .filter((one) => one.interfaceName === name && !store.interfaceIds.has(one.portIndex));
  if (lost.length === 0) return;
  notices.tell("plain", ta("offerCommands", lost.length, name), {
    label: ta("takeCommands"),
    run: () => void takeOver(app, [...new Set(lost.map((one) => one.portIndex))], name),
    holds: () => named(app, name) !== undefined,
    stays: true,
  });
}

/** Gives the commands of these node ids to the interface of that name. False when there are none. */
function takeOver(app: Application, from: readonly number[], name: string): boolean {
  const { store } = app;
  const to = named(app, name);
  const count = commandUses(store.project).filter((one) => from.includes(one.command.portIndex)).length;
  if (!to || count === 0) return false;
  const next = from.reduce((project, nodeId) => withMovedCommands(project, nodeId, to), store.project);
  changeAndTell(app, next, ta("commandsReturned", count, name));
  return true;
}
