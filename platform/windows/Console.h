#pragma once

/**
 * Has a click into the console of the process select no text until the process ends: a selection holds up
 * whoever prints. Nothing to do without a console. One thread at a time.
 */
void ForbidSelectionByClick();
