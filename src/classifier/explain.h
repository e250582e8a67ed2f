/*
 * explain.h - why a gate has its class, and which change of an input would turn it.
 */
#ifndef CLUTTER_CLASSIFIER_EXPLAIN_H
#define CLUTTER_CLASSIFIER_EXPLAIN_H

#include "classifier/functions/membership_set.h"
#include "classifier/scan/request.h"
#include "clutterclassifier/classifier.h"

namespace clutter::classifier {

clutter_explanation explainGate(const MembershipSet& set, const Request& request, int ray,
                                int gate);

}  // namespace clutter::classifier

#endif
