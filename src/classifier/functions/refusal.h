/*
 * refusal.h - why an operation of the handle cannot be done: thrown inside, a status outside.
 */
#ifndef CLUTTER_CLASSIFIER_REFUSAL_H
#define CLUTTER_CLASSIFIER_REFUSAL_H

#include <exception>
#include <string>
#include <utility>

#include "clutterclassifier/classifier.h"

namespace clutter::classifier {

class Refusal : public std::exception {
  public:
    Refusal(clutter_status status, std::string text) : status_(status), text_(std::move(text)) {}

    clutter_status status() const { return status_; }
    const char* what() const noexcept override { return text_.c_str(); }

  private:
    clutter_status status_;
    std::string text_;
};

/* Throws CLUTTER_INVALID_ARGUMENT unless a condition holds. */
inline void require(bool condition, const char* otherwise) {
    if (!condition) {
        throw Refusal(CLUTTER_INVALID_ARGUMENT, otherwise);
    }
}

}  // namespace clutter::classifier

#endif
