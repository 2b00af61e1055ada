import type { ComponentType } from "../../model/layout.ts";

/** Icons of the kinds of components in the palette and in the lists. */
export const partSigns: Record<ComponentType, string> = {
  button: "M4 8h16v8H4zM9 12h6",
  switch: "M8 7h8a5 5 0 0 1 0 10H8A5 5 0 0 1 8 7zM16 14a2 2 0 1 0 0-4 2 2 0 0 0 0 4z",
  slider: "M3 12h9M18 12h3M15 15a3 3 0 1 0 0-6 3 3 0 0 0 0 6z",
  text: "M5 7V5h14v2M12 5v14M9 19h6",
  image: "M4 5h16v14H4zM4 16l5-5 4 4 3-3 4 4M15 9h.01",
  link: "M4 5h9v14H4zM13 12h8M18 9l3 3-3 3",
  clock: "M12 21a9 9 0 1 0 0-18 9 9 0 0 0 0 18zM12 7v5l3.5 2",
  lamp: "M12 17a5 5 0 1 0 0-10 5 5 0 0 0 0 10zM12 2v2M12 20v2M2 12h2M20 12h2",
  gauge: "M4 17a9 9 0 1 1 16 0M12 14l4-5",
  group: "M4 6V4h4M16 4h4v2M20 18v2h-4M8 20H4v-2M4 9v6M20 9v6M10 4h4M10 20h4",
};
