/** Undo and redo over states that are never changed in place. */

/** How many steps can be undone. */
export const historySteps = 100;

export interface History<State> {
  readonly past: readonly State[];
  readonly present: State;
  readonly future: readonly State[];
}

export function startHistory<State>(present: State): History<State> {
  return { past: [], present, future: [] };
}

/** Adds a step. An unchanged state is not a step. */
export function step<State>(history: History<State>, next: State): History<State> {
  if (next === history.present) return history;
  return { past: [...history.past, history.present].slice(-historySteps), present: next, future: [] };
}

/** The history with each state replaced by the result of `change`. */
export function mapHistory<State>(history: History<State>, change: (state: State) => State): History<State> {
  const { past, present, future } = history;
  return { past: past.map(change), present: change(present), future: future.map(change) };
}

export function undo<State>(history: History<State>): History<State> {
  const previous = history.past.at(-1);
  if (previous === undefined) return history;
  return { past: history.past.slice(0, -1), present: previous, future: [history.present, ...history.future] };
}

export function redo<State>(history: History<State>): History<State> {
  const [next, ...future] = history.future;
  if (next === undefined) return history;
  return { past: [...history.past, history.present], present: next, future };
}
