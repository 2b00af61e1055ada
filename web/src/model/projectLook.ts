/** Changes of what holds for the look of the whole project. */
import type { Project } from "./project.ts";
import type { ProjectTheme } from "./projectTheme.ts";

/** @param theme  undefined: none, all is as the browser's appearance says */
export function withTheme(project: Project, theme: ProjectTheme | undefined): Project {
  const { theme: _, ...layout } = project.layout;
  return { ...project, layout: { ...layout, ...(theme && { theme }) } };
}
