#pragma once

/**
 * Keeps a click into the console of the process from selecting text until the process ends: a selection
 * blocks whoever prints. Does nothing without a console. One thread at a time.
 */
void ForbidSelectionByClick();
