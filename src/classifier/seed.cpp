/*
 * The seed of the calling thread's random draws, for hosts.
 */
#include <optional>

#include "clutterclassifier/classifier.h"
#include "dsp/search/random_fill.h"

clutter_status clutter_set_seed(const uint32_t* seed) {
    clutter::dsp::seedThread(seed ? std::optional(*seed) : std::nullopt);
    return CLUTTER_OK;
}
