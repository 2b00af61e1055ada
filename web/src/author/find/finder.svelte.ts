/** Whether the dialog for finding and replacing is open: a key of every screen and a button of the pages open it. */
export class Finder {
  isOpen = $state(false);
}
