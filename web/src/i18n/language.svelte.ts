/** The language of the user, as stored by the server, and the sentence of each key. */
import type { Server } from "../api/server.ts";
import { asObject } from "../model/json.ts";

export type Language = "zhCN" | "en";
export type Dictionary = Record<string, string>;

class LanguageState {
  current = $state<Language>("en");
  isAuto = $state(true);

  /** Takes the browser's language, until the server has reported another. @param tag  as "zh-CN" */
  startWith(tag: string): void {
    this.current = tag.toLowerCase().startsWith("zh") ? "zhCN" : "en";
  }

  /** Takes the language from the server; the previous one stays when the server reports none. */
  async load(server: Pick<Server, "language">): Promise<void> {
    try {
      const data = asObject(await server.language());
      if (data["language"] === "zhCN" || data["language"] === "en") this.current = data["language"];
      this.isAuto = data["isAuto"] !== false;
    } catch {
      // The browser's language serves until the server can be asked again.
    }
    document.documentElement.lang = this.current === "zhCN" ? "zh-CN" : "en";
  }

  async choose(choice: Language | "auto", server: Pick<Server, "language" | "setLanguage">): Promise<void> {
    await server.setLanguage(choice === "auto" ? this.current : choice, choice === "auto");
    await this.load(server);
  }
}

export const language = new LanguageState();

/**
 * A function from key to sentence in the current language. {0}, {1} … are replaced by the values, {0|is|are} by one of
 * the words, depending on whether the value is 1.
 */
export function translator<Keys extends string>(dictionaries: Record<Language, Record<Keys, string>>) {
  return (key: Keys, ...values: (string | number)[]): string =>
    dictionaries[language.current][key].replace(
      /\{(\d)(?:\|([^|}]*)\|([^}]*))?\}/g,
      (_, place: string, one?: string, more?: string) => {
        const value = values[Number(place)] ?? "";
        return one === undefined ? String(value) : String(value === 1 ? one : more);
      },
    );
}
