/*
 * display.h - how the records of a scan that was read from a file are shown.
 */
#ifndef CLUTTER_MODEL_DISPLAY_H
#define CLUTTER_MODEL_DISPLAY_H

#include "clutterclassifier/Cpluvek.h"

namespace clutter::model {

/* Makes a record polar, with axes that reach its last gate on both sides (both copies), ticks that
 * are so many parts of them apart, their labels, and the colours of a scan. */
void showWholeScan(Cpluvek& record, float parts, const char* xlabel, const char* ylabel);

/* Forms the date text, and the title from it. */
void entitleByTime(Cpluvek& record);

}  // namespace clutter::model

#endif
