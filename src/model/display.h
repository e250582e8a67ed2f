/*
 * display.h - display settings of records read from a scan file.
 */
#ifndef CLUTTER_MODEL_DISPLAY_H
#define CLUTTER_MODEL_DISPLAY_H

#include "clutterclassifier/Cpluvek.h"

namespace clutter::model {

/* Makes a record polar with the colours of a scan. Its axes (both copies) reach the last gate on
 * both sides and have this many intervals between ticks. */
void showWholeScan(Cpluvek& record, float intervals, const char* xlabel, const char* ylabel);

/* Sets the date text and the title, which contains it. */
void entitleByTime(Cpluvek& record);

}  // namespace clutter::model

#endif
