/* Text in large pieces: their order, and numbers in any locale. */
#include "base/text_writer.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>

#include "base/files/file.h"
#include "support/temp_dir.h"

namespace {

using clutter::base::TextWriter;

TEST(TextWriter, WritesThePiecesInOrderHoweverMany) {
    clutter::test::TempDir dir;
    const std::string path = dir.file("text");
    std::string expected;
    {
        const auto file = clutter::base::openFile(path.c_str(), "wt");
        TextWriter out(file.get());
        for (int i = 0; i < 20000; ++i) {
            out.text("<").integer(-i).text(",").fixed(i * 0.5, 1).text(",").general(i * 1e3);
            char line[64];
            std::snprintf(line, sizeof line, "<%d,%.1f,%g", -i, i * 0.5, i * 1e3);
            expected += line;
        }
    }
    const auto bytes = clutter::test::readFile(path);
    EXPECT_TRUE(std::string(bytes.begin(), bytes.end()) == expected);
}

TEST(TextWriter, KeepsTheDecimalPointWhateverTheLocale) {
    const char* set = nullptr;
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE"}) {
        if (set == nullptr) {
            set = std::setlocale(LC_NUMERIC, name);
        }
    }
    EXPECT_EQ(clutter::base::fixedText(-2.25, 3), "-2.250");
    std::setlocale(LC_NUMERIC, "C");
    if (set == nullptr) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
}

}  // namespace
