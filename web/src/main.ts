/** The start of the application: the operator's panel or the author's part, by the address. */
import { errorReports, reportUncaughtErrors } from "./api/errors.ts";
import { createServer } from "./api/server.ts";
import { followTheme } from "./view/theme.ts";
import "./view/theme.css";

const wantsPanel = () => /^#\/panel(\/|$)/.test(location.hash);
const isPanel = wantsPanel();

const server = createServer();
const reportError = errorReports(server);
reportUncaughtErrors(reportError);
followTheme();
addEventListener("hashchange", () => {
  if (wantsPanel() !== isPanel) location.reload();
});

const place = document.getElementById("app")!;
const { start } = isPanel ? await import("virtual:panel") : await import("./author/start.ts");
await start(place, server, reportError);
