/* json.cpp - quotes and escapes. */
#include "report/json.h"

#include <cmath>
#include <cstdio>

#include "report/terminal.h"

namespace cli {

std::string jsonText(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : forTerminal(text)) {
        quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return quoted + "\"";
}

std::string jsonNumber(double value) {
    if (std::isinf(value)) {
        return value > 0 ? "\"inf\"" : "\"-inf\"";
    }
    if (std::isnan(value)) {
        return "null";
    }
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

void JsonObject::addValue(const std::string& key, const std::string& value) {
    members_ += (members_.empty() ? "" : ", ") + jsonText(key) + ": " + value;
}

void JsonObject::add(const std::string& key, const std::string& text) {
    addValue(key, jsonText(text));
}

void JsonObject::add(const std::string& key, double value) {
    addValue(key, jsonNumber(value));
}

void JsonObject::add(const std::string& key, long value) {
    addValue(key, std::to_string(value));
}

void JsonObject::add(const std::string& key, const JsonObject& object) {
    addValue(key, object.text());
}

void JsonObject::add(const std::string& key, const std::vector<JsonObject>& objects) {
    std::string list;
    for (const JsonObject& object : objects) {
        list += (list.empty() ? "" : ", ") + object.text();
    }
    addValue(key, "[" + list + "]");
}

void JsonObject::addList(const std::string& key, const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ", ") + jsonText(text);
    }
    addValue(key, "[" + list + "]");
}

void JsonObject::print() const {
    std::printf("%s\n", text().c_str());
}

}  // namespace cli
