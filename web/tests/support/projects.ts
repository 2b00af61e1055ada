import type { Command } from "../../src/model/interactions.ts";
import { emptyLayout, newComponent, newPage } from "../../src/model/layout.ts";
import { emptyProject, type Project } from "../../src/model/project.ts";

/** A command through the interface of that number. */
export const command = (portIndex: number, content = "ON"): Command => ({
  portIndex,
  controlType: "netPortInfo",
  interfaceName: `device ${portIndex}`,
  commandName: "",
  content,
  contentFormat: 0,
  asciiEncode: 0,
});

/** One page "hall" of 1000 by 800 px, with buttons 1, 2 and 3 beside each other; button 1 has a command. */
export function sampleProject(): Project {
  const button = (id: number, x: number) => ({
    ...newComponent("button", x, 100, `B${id}`),
    id,
    width: 100,
    height: 50,
  });
  const page = {
    ...newPage("Hall", 1000, 800),
    id: "hall",
    components: [button(1, 100), button(2, 300), button(3, 600)],
  };
  return {
    ...emptyProject,
    layout: { ...emptyLayout, pages: [page] },
    interactions: { 1: { triggers: { click: [command(1)] } } },
  };
}

/** The same with another name of its page. */
export function renamed(project: Project, name: string): Project {
  const pages = project.layout.pages.map((page) => ({ ...page, name }));
  return { ...project, layout: { ...project.layout, pages } };
}

export const pageNames = (project: Project) => project.layout.pages.map((page) => page.name);
