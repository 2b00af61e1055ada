/** The language of the user, as the server keeps it, and the way from a key to its sentence. */
import type { Server } from "../api/server.ts";
import { asObject } from "../model/json.ts";

export type Language = "zhCN" | "en";
export type Dictionary = Record<string, string>;

class LanguageState {
  current = $state<Language>("en");
  isAuto = $state(true);

  /** Takes the browser's language, for as long as the server has told no other. @param tag  as "zh-CN" */
  startWith(tag: string): void {
    this.current = tag.toLowerCase().startsWith("zh") ? "zhCN" : "en";
  }

  /** Takes the language from the server; the one that was there stays when the server doesn't tell one. */
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
 * A function from key to sentence in the current language; {0}, {1} … take the values, {0|is|are} one of the words by
 * whether the value is 1.
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
