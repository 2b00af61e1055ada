/** Short notices at the lower edge, and questions that need an answer. */
import { codes, ServerError } from "../../api/server.ts";
import type { Clock } from "../../api/clock.ts";
import type { ReportError } from "../../api/errors.ts";
import { ta } from "../../i18n/author.ts";
import { failureText } from "../../i18n/panel.ts";

export interface Notice {
  readonly id: number;
  readonly kind: "good" | "bad" | "plain";
  readonly text: string;
  readonly action?: {
    readonly label: string;
    readonly run: () => void;
    /** Whether it can still be done: otherwise the notice is not shown. Absent: always. */
    readonly holds?: () => boolean;
    /** The notice stays until it is closed or the action is done. */
    readonly stays?: boolean;
  };
}

export interface Question {
  readonly title: string;
  readonly text: string;
  readonly yes: string;
  readonly isDangerous: boolean;
  readonly answer: (yes: boolean) => void;
}

/** How long a notice stays, in ms: bad ones longer, those with an action longest. */
const times = { good: 2500, plain: 5000, bad: 9000, action: 15_000 };

export class Notices {
  #list = $state.raw<readonly Notice[]>([]);
  readonly list = $derived(this.#list.filter(({ action }) => action?.holds?.() ?? true));
  question = $state.raw<Question | undefined>();
  #next = 1;

  constructor(
    readonly clock: Clock,
    readonly reportError: ReportError,
  ) {}

  tell(kind: Notice["kind"], text: string, action?: Notice["action"]): void {
    const notice: Notice = { id: this.#next++, kind, text, ...(action && { action }) };
    this.#list = [...this.list.filter((one) => one.text !== text), notice].slice(-3);
    if (action?.stays) return;
    this.clock.after(action ? times.action : times[kind], () => this.drop(notice.id));
  }

  drop(id: number): void {
    this.#list = this.#list.filter((one) => one.id !== id);
  }

  ask(title: string, text: string, yes: string, isDangerous = false): Promise<boolean> {
    return new Promise((resolve) => {
      this.question = {
        title,
        text,
        yes,
        isDangerous,
        answer: (value) => {
          this.question = undefined;
          resolve(value);
        },
      };
    });
  }

  /** Runs an action on the server; a failure becomes a notice. True when it succeeded. */
  async attempt(act: () => Promise<unknown>): Promise<boolean> {
    try {
      await act();
      return true;
    } catch (error) {
      this.tell("bad", this.sentenceOf(error));
      return false;
    }
  }

  /** An error as a sentence that says what to do. An error that is not one of the server's replies is reported. */
  sentenceOf(error: unknown): string {
    if (!(error instanceof ServerError)) {
      this.reportError(error, "author");
      return ta("unexpected", String(error));
    }
    if (error.code === codes.noConnection) return ta("noChannel");
    if (error.code === codes.unreachable) return ta("unreachable");
    const { said, advice } = failureText(error.code, error.text);
    return [said.trimEnd(), advice].filter(Boolean).join("\n");
  }
}
