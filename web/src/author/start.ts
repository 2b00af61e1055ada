export function start(place: HTMLElement): void {
  place.textContent = "author";
}
