/** The lock of the author's screens, in English. The keys are those of every language. */
export const lockEn = {
  pinTitle: "PIN for the author's screens",
  lock_set: "Set a PIN",
  lock_change: "Change the PIN",
  lock_remove: "Remove the PIN",
  lockIsSet: "A PIN is set: these screens ask for it, once in each tab.",
  lockIsNotSet: "No PIN is set: whoever opens this address can change the pages.",
  lockUnsaved: "It changes with Save.",
  lockHint:
    "It keeps curious hands away from these screens. It is no protection against an attack: whoever reaches the server in the network can read and write everything without a PIN. A part of the project, like the pages; tabs that are open stay open.",
  lockForgotten:
    "Whoever forgets the PIN needs the machine of the server: there, the field “lock” can be removed from layout.json.",
  pinNeeded: "These screens are locked",
  pin: "PIN",
  pin_present: "Present PIN",
  pin_fresh: "New PIN",
  pin_again: "New PIN again",
  pinKeys: "Digits",
  pinBack: "Delete the last digit",
  pinEnter: "Open",
  pinWrong: "This PIN is wrong.",
  pinPause: "{0} {0|second|seconds} until the next try.",
  pinFault: "A PIN has {0} to {1} digits.",
  pinDiffers: "It differs from the new PIN.",
};
