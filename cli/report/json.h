/* json.h - values and objects of JSON documents. */
#ifndef CLI_REPORT_JSON_H
#define CLI_REPORT_JSON_H

#include <string>
#include <vector>

namespace cli {

/* In quotes; what a terminal cannot show is replaced. */
std::string jsonText(const std::string& text);

/* Nine digits; null for NaN, "inf" and "-inf" in quotes. */
std::string jsonNumber(double value);

/* Members in the order in which they are added. */
class JsonObject {
  public:
    void add(const std::string& key, const std::string& text);
    void add(const std::string& key, double value);
    void add(const std::string& key, long value);
    void add(const std::string& key, int value) { add(key, static_cast<long>(value)); }
    void add(const std::string& key, const JsonObject& object);
    void add(const std::string& key, const std::vector<JsonObject>& objects);

    /* Lists of texts. */
    void addList(const std::string& key, const std::vector<std::string>& texts);

    [[nodiscard]] std::string text() const { return "{" + members_ + "}"; }

    /* On a line of standard output. */
    void print() const;

  private:
    void addValue(const std::string& key, const std::string& value);

    std::string members_;
};

}  // namespace cli

#endif
