/** Reports uncaught errors to the server's client error log: each once, and not more than a few. */
import type { Server } from "./server.ts";

const mostReports = 20;

/** Reports an error to the server's log. Never throws: there is nowhere else to report it. */
export type ReportError = (error: unknown, source: string) => void;

export function errorReports(server: Pick<Server, "reportError">): ReportError {
  const reported = new Set<string>();
  return (error, source) => {
    const message = error instanceof Error ? `${error.name}: ${error.message}` : String(error);
    if (reported.has(message) || reported.size >= mostReports) return;
    reported.add(message);
    console.error(error);
    const stack = error instanceof Error ? error.stack : undefined;
    const report = {
      source,
      message,
      url: location.href,
      timestamp: new Date().toISOString(),
      userAgent: navigator.userAgent,
      stack,
    };
    server.reportError(report).catch(() => reported.delete(message));
  };
}

export function reportUncaughtErrors(reportError: ReportError): void {
  addEventListener("error", (event) => reportError(event.error ?? event.message, "uncaught"));
  addEventListener("unhandledrejection", (event) => reportError(event.reason, "unhandled rejection"));
}
