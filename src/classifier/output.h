/*
 * output.h - a classification written to a caller's arrays.
 */
#ifndef CLUTTER_CLASSIFIER_OUTPUT_H
#define CLUTTER_CLASSIFIER_OUTPUT_H

#include "classifier/functions/membership_set.h"
#include "classifier/scan/request.h"
#include "clutterclassifier/classifier.h"

namespace clutter::classifier {

/* Writes the arrays that a checked result asks for. Everything is allocated before the first write.
 */
void classifyInto(const MembershipSet& set, const Request& request, const clutter_result& result);

}  // namespace clutter::classifier

#endif
