/*
 * The C functions of the handle. Each turns exceptions into a status and a text.
 */
#include "clutterclassifier/classifier.h"

#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "base/text.h"
#include "classifier/explain.h"
#include "classifier/functions/membership_set.h"
#include "classifier/functions/refusal.h"
#include "classifier/output.h"
#include "classifier/scan/request.h"
#include "fuzzy/classifiers/inputs.h"

using clutter::classifier::MembershipSet;
using clutter::classifier::Refusal;
using clutter::classifier::Request;
using clutter::classifier::require;

struct clutter_classifier {
    std::unique_ptr<const MembershipSet> set;
};

namespace {

void say(clutter_message* message, const char* text) {
    if (message != nullptr) {
        clutter::base::copyText(message->text, text);
    }
}

/* Runs an operation; nothing it throws goes further. */
template <class Operation>
clutter_status guarded(clutter_message* message, Operation operation) {
    say(message, "");
    try {
        operation();
        return CLUTTER_OK;
    } catch (const Refusal& refusal) {
        say(message, refusal.what());
        return refusal.status();
    } catch (const std::bad_alloc&) {
        say(message, clutter_status_text(CLUTTER_NO_MEMORY));
        return CLUTTER_NO_MEMORY;
    } catch (const std::exception&) {
        // std::length_error of a container: more elements than it can hold.
        say(message, clutter_status_text(CLUTTER_TOO_LARGE));
        return CLUTTER_TOO_LARGE;
    }
}

std::unique_ptr<const MembershipSet> read(const char* directory, std::uint32_t inputs,
                                          std::uint32_t flags) {
    require(directory != nullptr && directory[0] != '\0', "directory is null or empty");
    require((inputs & ~static_cast<std::uint32_t>(CLUTTER_ALL_INPUTS)) == 0,
            "inputs has bits that are not inputs");
    require((flags & ~static_cast<std::uint32_t>(CLUTTER_WITH_ALL_CLUTTER)) == 0,
            "flags has bits that are not known");
    const int classes = flags != 0 ? clutter::classifier::kMaxClasses : 2;
    const std::uint32_t all = CLUTTER_ALL_INPUTS;
    return std::make_unique<MembershipSet>(directory, inputs != 0 ? inputs : all, classes);
}

const MembershipSet& setOf(const clutter_classifier* classifier) {
    require(classifier != nullptr, "classifier is null");
    return *classifier->set;
}

}  // namespace

const char* clutter_status_text(int status) {
    switch (status) {
        case CLUTTER_OK:
            return "done";
        case CLUTTER_INVALID_ARGUMENT:
            return "an argument makes no sense";
        case CLUTTER_TOO_LARGE:
            return "the sizes are too large";
        case CLUTTER_NO_MEMORY:
            return "not enough memory";
        case CLUTTER_NOT_READ:
            return "a directory or membership file cannot be read";
        case CLUTTER_MALFORMED:
            return "the contents of a membership file make no sense";
    }
    return "unknown status";
}

clutter_status clutter_create(const char* directory, uint32_t inputs, uint32_t flags,
                              clutter_classifier** classifier, clutter_message* message) {
    return guarded(message, [&] {
        require(classifier != nullptr, "classifier is null");
        auto fresh = std::make_unique<clutter_classifier>();
        fresh->set = read(directory, inputs, flags);
        *classifier = fresh.release();
    });
}

clutter_status clutter_reset(clutter_classifier* classifier, const char* directory, uint32_t inputs,
                             uint32_t flags, clutter_message* message) {
    return guarded(message, [&] {
        require(classifier != nullptr, "classifier is null");
        classifier->set = read(directory, inputs, flags);
    });
}

clutter_status clutter_destroy(clutter_classifier* classifier) {
    delete classifier;
    return CLUTTER_OK;
}

clutter_status clutter_classify(const clutter_classifier* classifier, const clutter_scan* scan,
                                const clutter_options* options, const clutter_result* result,
                                clutter_message* message) {
    return guarded(message, [&] {
        const MembershipSet& set = setOf(classifier);
        const Request request = clutter::classifier::checkedRequest(set, scan, options);
        classifyInto(set, request, clutter::classifier::checkedResult(result, request));
    });
}

clutter_status clutter_explain(const clutter_classifier* classifier, const clutter_scan* scan,
                               const clutter_options* options, int64_t ray, int64_t gate,
                               clutter_explanation* explanation, clutter_message* message) {
    return guarded(message, [&] {
        const MembershipSet& set = setOf(classifier);
        const Request request = clutter::classifier::checkedRequest(set, scan, options);
        require(explanation != nullptr && explanation->size >= sizeof *explanation,
                "explanation is null, or its size is not set");
        require(ray >= 0 && ray < request.rays && gate >= 0 && gate < request.gates,
                "ray or gate is outside the scan");
        const std::size_t size = explanation->size;
        *explanation = explainGate(set, request, static_cast<int>(ray), static_cast<int>(gate));
        explanation->size = size;
    });
}
