/* Files of settings: what is found wrong with them, and that the example means what it says. */
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/process/configuration.h"
#include "support/temp_dir.h"

namespace {

using scan::Configuration;
using scan::examineConfiguration;

/* "line: text" of every problem; '!' where a scan cannot be processed so. */
std::string problemsOf(const std::string& text) {
    std::ostringstream all;
    for (const scan::ConfigurationProblem& problem : examineConfiguration(text).problems) {
        all << problem.line << (problem.fatal ? "! " : ": ") << problem.text << "\n";
    }
    return all.str();
}

TEST(ConfigurationCheck, ReportsWhatIsWrongAndWhere) {
    const struct {
        const char* text;
        const char* problems;
    } kCases[] = {
        {"", ""},
        {"WHAT2DO 255\n\nZDR_BIAS\n -0.2e0", ""},
        {"clutter_alg 15\n", "1: unknown key clutter_alg, case matters: CLUTTER_ALG\n"},
        {"WHAT2DO 1\r\n\r\nWHAT_2DO 1", "3: unknown key WHAT_2DO\n"},
        {"# 1", "1: unknown key # (a configuration file has no comments)\n"},
        {"a_Z-R 200\nb_Z-R 1.6\na_Z-R 300",
         "3: a_Z-R is given again: line 1 has it already, the last one counts\n"},
        {"\nFREEZING_LEVEL\n3km", "3! FREEZING_LEVEL: 3km is not a number\n"},
        {"FREEZING_LEVEL nan", "1! FREEZING_LEVEL: nan is not a number\n"},
        {"ZDR_BIAS 0,2", "1! ZDR_BIAS: 0,2 is not a number\n"},
        {"ZDR_BIAS inf", "1! ZDR_BIAS: inf is not a number\n"},
        {"ZDR_BIAS 1e999", "1! ZDR_BIAS: 1e999 is not a number\n"},
        {"WHAT2DO 1.0", "1! WHAT2DO: 1.0 is not a whole number\n"},
        // Beyond the table, but read all the same.
        {"WHAT2DO 256", "1: WHAT2DO: 256 is not within 0 to 255\n"},
        {"ATTENUATION_ALG 9", "1: ATTENUATION_ALG: 9 is not within -1 to 8\n"},
        {"RAINFALL_ALG -1 GATES2AVE_ZHH -1", "1: GATES2AVE_ZHH: -1 is not within 0 to 999\n"},
        {"RAINFALL_ALG -2147483648\nRAINFALL_ALG 7",
         "2: RAINFALL_ALG is given again: line 1 has it already, the last one counts\n"
         "2: RAINFALL_ALG: 7 is more than 4\n"},
        {"CLUTTER_ALG 32767", "1: CLUTTER_ALG: 32767 is not within 0 to 511\n"},
        {"b_Z-R 0", "1: b_Z-R: 0 is not above 0 or more than 1e+30\n"},
        {"c_ZZDR-R 0 a_KDP-R -1", "1: a_KDP-R: -1 is not above 0 or more than 1e+30\n"},
        {"ZDR_BIAS 3e38", "1: ZDR_BIAS: 3e38 is not within -1e+30 to 1e+30\n"},
        /* Beyond what the setting holds, or what a window can be. */
        {"RAYS2AVE_PDP 1000", "1! RAYS2AVE_PDP: 1000 is not within 0 to 999\n"},
        {"CLUTTER_ALG 32768",
         "1! CLUTTER_ALG: 32768 is too large, and would be read as another number\n"},
        {"WHAT2DO 4294967297",
         "1! WHAT2DO: 4294967297 is too large, and would be read as another number\n"},
        {"RAINFALL_ALG -2147483649",
         "1! RAINFALL_ALG: -2147483649 is too large, and would be read as another number\n"},
        {"ZDR_BIAS 4e38", "1! ZDR_BIAS: 4e38 is too large, and would be read as another number\n"},
        {"CLUTTER_MFS mf", "1: CLUTTER_MFS: the directory lacks its last /\n"},
        {"WHAT2DO 1\nZDR_BIAS", "2: ZDR_BIAS has no value\n"},
        /* One missing value does not put the rest out of step. */
        {"ZDR_BIAS\nWHAT2DO 15", "1! ZDR_BIAS has no value: WHAT2DO follows\n"},
        {"\x1b[2J 1", "1: unknown key ?[2J\n"},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(problemsOf(row.text), row.problems) << row.text;
    }
}

/* Settings that a context keeps, as text. */
std::string settingsOf(const Crres& c) {
    std::ostringstream all;
    all << c.clutteralg << ' ' << c.gates2ave_zhh << ' ' << c.gates2ave_zdr << ' '
        << c.gates2ave_pdp << ' ' << c.gates2ave_rhv << ' ' << c.rays2ave_zhh << ' '
        << c.rays2ave_zdr << ' ' << c.rays2ave_pdp << ' ' << c.rays2ave_rhv << ' ' << c.rainfallalg
        << ' ' << c.attenuationalg << ' ' << c.freezinglevel << ' ' << c.zdrbias;
    for (int row : {0, 1, 3}) {
        for (int i = 0; i < 3; ++i) {
            all << ' ' << static_cast<float>(c.radarpro.coefficients[row][i]);
        }
    }
    return all.str();
}

TEST(ConfigurationExample, IsSoundAndHoldsTheDefaults) {
    const clutter::test::TempDir directory;
    const std::string text = scan::exampleConfiguration("/mf/");
    EXPECT_EQ(problemsOf(text), "");
    EXPECT_FALSE(examineConfiguration(scan::exampleConfiguration("")).names("CLUTTER_MFS"));
    std::string path = directory.file("settings.txt");
    clutter::test::writeFile(path, {text.begin(), text.end()});
    const auto fresh = std::make_unique<Crres>();
    const auto read = std::make_unique<Crres>();
    testing::internal::CaptureStdout();
    read->readinitialconfiguration(path.data());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(settingsOf(*read), settingsOf(*fresh));
    EXPECT_EQ(read->what2do, 255);
    EXPECT_STREQ(read->mfdir, "/mf/");
}

/* Every key changes the setting that it is for: the table knows no key the library does not. */
TEST(ConfigurationExample, EveryKeyIsKnownToTheLibrary) {
    const clutter::test::TempDir directory;
    std::istringstream words(scan::exampleConfiguration("/mf/"));
    std::string key, value, changed;
    while (words >> key >> value) {
        changed += key + (key == "CLUTTER_MFS" ? " /other/\n" : " 3\n");
        EXPECT_NE(scan::configurationTable().find("\n" + key),
                  key == "WHAT2DO" ? 0 : std::string::npos);
    }
    std::string path = directory.file("settings.txt");
    clutter::test::writeFile(path, {changed.begin(), changed.end()});
    const auto context = std::make_unique<Crres>();
    context->radarpro.coefficients[3][2] = 3;
    context->radarpro.coefficients[0][2] = 3;
    context->readinitialconfiguration(path.data());
    EXPECT_EQ(settingsOf(*context), "3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3");
}

}  // namespace
