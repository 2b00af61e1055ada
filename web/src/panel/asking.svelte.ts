/** What asks the operator before something is sent: a text, or a pop-up page of the author. One question at a time. */
import { asks, type AskingComponent, type Layout, type Page } from "../model/layout.ts";
import { confirmPageOf } from "../model/navigation.ts";

export interface Question {
  readonly component: AskingComponent;
  /** The page that asks; nothing: the component's text does. */
  readonly page: Page | undefined;
}

export class Asking {
  question = $state.raw<Question | undefined>();
  #resolve: (yes: boolean) => void = () => undefined;

  /** True at once if the component asks nothing. A question that is still open is answered with no. */
  ask(component: AskingComponent, layout: Layout): Promise<boolean> {
    this.answer(false);
    if (!asks(component)) return Promise.resolve(true);
    return new Promise((resolve) => {
      this.#resolve = resolve;
      this.question = { component, page: confirmPageOf(layout, component) };
    });
  }

  /** No effect without an open question. */
  answer(yes: boolean): void {
    this.question = undefined;
    this.#resolve(yes);
    this.#resolve = () => undefined;
  }
}
