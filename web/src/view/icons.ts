import { isIconPath } from "../model/icons.ts";

/** Icons of the application and of components: strokes on a field of 24 by 24. */

/** Those to which a look may refer by their name. */
export const partIcons = {
  power: "M12 3v9M6.3 6.8a8 8 0 1 0 11.4 0",
  play: "M7 4.5v15l12-7.5z",
  pause: "M8 5v14M16 5v14",
  stop: "M6 6h12v12H6z",
  record: "M12 18a6 6 0 1 0 0-12 6 6 0 0 0 0 12z",
  next: "M5 5v14l10-7zM19 5v14",
  previous: "M19 5v14L9 12zM5 5v14",
  volumeUp: "M4 9v6h4l5 4V5L8 9zM16 12h6M19 9v6",
  volumeDown: "M4 9v6h4l5 4V5L8 9zM16 12h6",
  mute: "M4 9v6h4l5 4V5L8 9zM17 9.5l5 5M22 9.5l-5 5",
  microphone: "M12 15a3 3 0 0 0 3-3V6a3 3 0 0 0-6 0v6a3 3 0 0 0 3 3zM5.5 11.5a6.5 6.5 0 0 0 13 0M12 18v3.5",
  up: "M5 15l7-7 7 7",
  down: "M5 9l7 7 7-7",
  left: "M15 5l-7 7 7 7",
  right: "M9 5l7 7-7 7",
  plus: "M12 5v14M5 12h14",
  minus: "M5 12h14",
  check: "M4.5 12.5l5 5 10-11",
  cross: "M6 6l12 12M18 6L6 18",
  lamp: "M9 18h6M10 21h4M8.5 15c0-2-2.5-3-2.5-6a6 6 0 0 1 12 0c0 3-2.5 4-2.5 6z",
  projector: "M3 8h18v9H3zM6 17v2M18 17v2M15 15a2.5 2.5 0 1 0 0-5 2.5 2.5 0 0 0 0 5zM6 11h3",
  display: "M3 5h18v11H3zM8 20h8M12 16v4",
  camera: "M3 7h12v10H3zM15 11l6-3.5v9L15 13",
  curtains: "M3 4h18M5 4v16c3-1 5-6 5-16M19 4v16c-3-1-5-6-5-16",
  matrix: "M4 6h5l6 12h5M4 18h5l6-12h5M17 3l3 3-3 3M17 15l3 3-3 3",
  temperature: "M10 14V5a2 2 0 0 1 4 0v9a4 4 0 1 1-4 0z",
  fan:
    "M12 12c-5-1-6-7-2-8s4 4 2 8zM12 12c5 1 6 7 2 8s-4-4-2-8z" +
    "M12 12c1-5 7-6 8-2s-4 4-8 2zM12 12c-1 5-7 6-8 2s4-4 8-2z",
  lock: "M6 11h12v9H6zM8.5 11V8a3.5 3.5 0 0 1 7 0v3",
  unlock: "M6 11h12v9H6zM8.5 11V8a3.5 3.5 0 0 1 6.700-1.5",
  home: "M4 11l8-7 8 7v9h-5v-6H9v6H4z",
  grid: "M4 4h6v6H4zM14 4h6v6h-6zM4 14h6v6H4zM14 14h6v6h-6z",
  clock: "M12 21a9 9 0 1 0 0-18 9 9 0 0 0 0 18zM12 7v5l3.5 2",
  people:
    "M9 11a3.5 3.5 0 1 0 0-7 3.5 3.5 0 0 0 0 7zM2.5 20c0-4 3-6 6.5-6s6.5 2 6.5 6" +
    "M16 4.5a3.5 3.5 0 0 1 0 6.5M18 14.5c2.5.7 3.5 2.800 3.5 5.5",
  bell: "M6 16V11a6 6 0 0 1 12 0v5l1.5 2h-15zM10 21h4",
} as const;

/** The path of a look's icon; none when the look has none, or one of a name that is unknown. */
export function iconPath(icon: string): string | undefined {
  if (Object.hasOwn(partIcons, icon)) return partIcons[icon as keyof typeof partIcons];
  return isIconPath(icon) ? icon : undefined;
}
