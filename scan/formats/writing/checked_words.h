/* checked_words.h - numbers on their way into the narrow words of a file format. */
#ifndef SCAN_FORMATS_WRITING_CHECKED_WORDS_H
#define SCAN_FORMATS_WRITING_CHECKED_WORDS_H

#include <string>
#include <vector>

namespace scan {

/* Converts numbers to words. A number that a word cannot hold becomes 0, with one note a quantity.
 */
class CheckedWords {
  public:
    /* kind: "a polar data file", the beginning of every note. */
    explicit CheckedWords(std::string kind) : kind_(std::move(kind)) {}

    /* Whether value lies within the ends; a note otherwise. */
    bool allows(const char* what, double value, double lowest, double highest);

    /* value x perUnit, rounded, in 16 bits with a sign. */
    short word(const char* what, double value, double perUnit = 1);

    void note(const std::string& sentence);
    [[nodiscard]] const std::string& kind() const { return kind_; }
    [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }

  private:
    std::string kind_;
    std::vector<std::string> quantities_;
    std::vector<std::string> notes_;
};

}  // namespace scan

#endif
