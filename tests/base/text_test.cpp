/* Numbers, tokens and bounded copies, compared with the C library. */
#include "base/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/bits.h"

namespace {

using namespace clutter::base;

TEST(ParseNumber, AgreesWithTheCLibrary) {
    // clang-format off
    std::vector<std::string> tokens = {
        "0", "-0", "1.5", "+1.5", "-1.5e3", "1e", "1e+", "1.e2", ".5", ".", "-", "+", "+-1",
        "--1", "-+1", "abc", "12abc", "1,5", "nan", "inf", "-inf", "infinity", "INF", "1e400",
        "-1e400", "1e-400", "1e-320", "4.9e-324", "0x1p-3", "0x.8", "0x", "0xg", "-0x1F",
        "1e99999999999", "1e-99999999999", "0x1p5000", "1e9223372036854775807",
        "0.001e-9223372036854775807", "0x-5", "-0x-5", "0xinf", "0xnan", "0x1p-5000", "", "1e-5x",
        "0.0000000000000000000000000000000000000000000001e-300"};
    // clang-format on
    tokens.push_back(std::string(400, '9'));
    tokens.push_back("0." + std::string(400, '0') + "1");
    tokens.push_back("1" + std::string(400, '0') + "e-400");
    for (const std::string& token : tokens) {
        EXPECT_TRUE(clutter::test::sameBits(parseNumber(token), std::atof(token.c_str())))
            << token << " gives " << parseNumber(token) << ", not " << std::atof(token.c_str());
    }
}

TEST(ParseNumber, DecimalPointWhateverTheLocale) {
    const char* set = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_EQ(parseNumber("0.25"), 0.25);
    if (set != nullptr) {
        std::setlocale(LC_NUMERIC, "C");
    }
}

TEST(ParseInteger, AgreesWithTheCLibraryAndSaturates) {
    for (const char* token : {"0", "12", "-12", "+7", "+-7", "-+7", "--7", "3.9", "x", "", "12x",
                              "0x10", "9223372036854775807", "-9223372036854775808",
                              "9223372036854775808", "-99999999999999999999999"}) {
        EXPECT_EQ(parseInteger(token), std::strtoll(token, nullptr, 10)) << token;
    }
}

TEST(TokenReader, SplitsAtAnyWhiteSpace) {
    const std::string longToken(100000, 'x');
    TokenReader tokens(std::string_view("  a\tb\r\n\v\fc \n"));
    for (const char* expected : {"a", "b", "c"}) {
        EXPECT_EQ(tokens.next(), expected);
    }
    EXPECT_FALSE(tokens.next());
    EXPECT_FALSE(tokens.next());
    EXPECT_EQ(TokenReader(longToken).next(), longToken);
}

TEST(CopyText, CutsAndTerminates) {
    char buffer[4] = "zzz";
    copyText(buffer, "abcdef");
    EXPECT_STREQ(buffer, "abc");
    copyText(buffer, buffer + 1);
    EXPECT_STREQ(buffer, "bc");
    copyText(buffer, nullptr);
    EXPECT_STREQ(buffer, "");
}

}  // namespace
