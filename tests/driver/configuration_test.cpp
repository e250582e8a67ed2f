/* The configuration file of the context. */
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>

#include "base/files/file.h"
#include "clutterclassifier/Crres.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

class Configuration : public testing::Test {
  protected:
    /* Reads a text as the context's configuration; returns what is printed. */
    std::string read(const std::string& text) {
        std::string path = directory_.file("settings");
        clutter::test::writeText(path, text);
        testing::internal::CaptureStdout();
        EXPECT_EQ(c.readinitialconfiguration(path.data()), 0);
        return testing::internal::GetCapturedStdout();
    }

    Crres c;

  private:
    clutter::test::TempDir directory_;
};

TEST_F(Configuration, EveryKeyGoesToItsSetting) {
    const std::string text =
        "WHAT2DO 1 CLUTTER_MFS /some/where/ CLUTTER_ALG 3\n"
        "GATES2AVE_ZHH 4 GATES2AVE_ZDR 5 GATES2AVE_PDP 6 GATES2AVE_RHV 7\r\n"
        "RAYS2AVE_ZHH 8\tRAYS2AVE_ZDR 9 RAYS2AVE_PDP 10 RAYS2AVE_RHV 11\n"
        "RAINFALL_ALG -12 ATTENUATION_ALG 13 FREEZING_LEVEL 14.5 ZDR_BIAS -0.15\n"
        "a_Z-R 16.1 b_Z-R 17.1 a_ZZDR-R 0.01583 b_ZZDR-R 19.1 c_ZZDR-R -20.1\n"
        "a_KDP-R 21.1 b_KDP-R 22.1";
    EXPECT_EQ(read(text), "");
    EXPECT_EQ(c.what2do, 1);
    EXPECT_STREQ(c.mfdir, "/some/where/");
    EXPECT_EQ(c.clutteralg, 3);
    const int windows[] = {c.gates2ave_zhh, c.gates2ave_zdr, c.gates2ave_pdp, c.gates2ave_rhv,
                           c.rays2ave_zhh,  c.rays2ave_zdr,  c.rays2ave_pdp,  c.rays2ave_rhv};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(windows[i], 4 + i);
    }
    EXPECT_EQ(c.rainfallalg, -12);
    EXPECT_EQ(c.attenuationalg, 13);
    EXPECT_EQ(c.freezinglevel, 14.5f);
    EXPECT_EQ(c.zdrbias, -0.15f);
    const auto& k = c.radarpro.coefficients;
    EXPECT_EQ(k[0][0], static_cast<double>(16.1f)) << "through single precision";
    EXPECT_EQ(k[0][1], static_cast<double>(17.1f));
    EXPECT_EQ(k[1][0], static_cast<double>(0.01583f));
    EXPECT_EQ(k[1][1], static_cast<double>(19.1f));
    EXPECT_EQ(k[1][2], static_cast<double>(-20.1f));
    EXPECT_EQ(k[3][0], static_cast<double>(21.1f));
    EXPECT_EQ(k[3][1], static_cast<double>(22.1f));
    EXPECT_EQ(k[2][0], 49.2144);
    EXPECT_STREQ(c.vprfile, "");
}

TEST_F(Configuration, AFileWithAnEndlessLineIsNotRead) {
    const int before = c.what2do;
    EXPECT_EQ(read("WHAT2DO 1 " + std::string(clutter::base::kMaxLineBytes, 'x') + " 2"), "");
    EXPECT_EQ(c.what2do, before);
}

TEST_F(Configuration, UnknownKeysAreReportedInOrderAndSkipped) {
    EXPECT_EQ(read("clutter_alg 15 WHAT2DO 7 # 1\nGATES2AVE_VEL 3 what2do"),
              "The command 'clutter_alg' was not found!\n"
              "The command '#' was not found!\n"
              "The command 'GATES2AVE_VEL' was not found!\n");
    EXPECT_EQ(c.clutteralg, 255);
    EXPECT_EQ(c.what2do, 7);
}

TEST_F(Configuration, LaterPairsWinAndALastKeyWithoutValueIsIgnored) {
    EXPECT_EQ(read("WHAT2DO 1 WHAT2DO 2 ZDR_BIAS"), "");
    EXPECT_EQ(c.what2do, 2);
    EXPECT_EQ(c.zdrbias, 0.0f);
    EXPECT_EQ(read("CLUTTER_ALG 15"), "");
    EXPECT_EQ(c.what2do, 2) << "settings that a file does not name stay";
    EXPECT_EQ(c.clutteralg, 15);
    EXPECT_EQ(read(""), "");
}

TEST_F(Configuration, ValuesAreTheNumbersTheyStartWith) {
    struct Case {
        const char* value;
        int whole;
        float number;
    };
    const Case cases[] = {{"12.9", 12, 12.9f},     {"7dB", 7, 7.0f},
                          {"none", 0, 0.0f},       {"-3e2", -3, -300.0f},
                          {"+5", 5, 5.0f},         {"4294967297", 1, 4294967296.0f},
                          {"1e999", 1, HUGE_VALF}, {"0x10", 0, 16.0f}};
    for (const Case& test : cases) {
        const std::string value = test.value;
        EXPECT_EQ(read("RAINFALL_ALG " + value + " FREEZING_LEVEL " + value), "");
        EXPECT_EQ(c.rainfallalg, test.whole) << value;
        EXPECT_EQ(c.freezinglevel, test.number) << value;
    }
    read("CLUTTER_ALG 65551");
    EXPECT_EQ(c.clutteralg, 15) << "16 bits";
}

TEST_F(Configuration, WordsOfAnyLengthAreCut) {
    const std::string word(100000, 'x');
    EXPECT_EQ(read(word + " 1 CLUTTER_MFS " + word + " WHAT2DO 9"),
              "The command '" + word.substr(0, 1023) + "' was not found!\n");
    EXPECT_EQ(std::string(c.mfdir), word.substr(0, 1023));
    EXPECT_EQ(c.what2do, 9);
}

TEST_F(Configuration, DecimalPointWhateverTheLocale) {
    const char* const locale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    read("ZDR_BIAS 0.25");
    if (locale != nullptr) {
        std::setlocale(LC_NUMERIC, "C");
    }
    EXPECT_EQ(c.zdrbias, 0.25f);
}

TEST_F(Configuration, FilesThatCannotBeReadAreSilent) {
    char absent[] = "/nonexistent/settings", folder[] = "/tmp";
    testing::internal::CaptureStdout();
    for (char* path : {absent, folder, static_cast<char*>(nullptr)}) {
        EXPECT_EQ(c.readinitialconfiguration(path), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(c.clutteralg, 255);
}

}  // namespace
