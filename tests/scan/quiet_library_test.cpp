/* What a thread changes for itself alone: messages of the library, and draws. */
#include "scan/quiet_library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"

namespace {

/* An operation that prints a line. */
void speak() {
    clutterclassifier("", 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                      nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST(QuietLibrary, KeepsItsOwnThreadQuietAndLosesNothingOfTheOthers) {
    const std::string line = "nrays and ngates should be positive!\n";
    testing::internal::CaptureStdout();
    {
        const scan::QuietLibrary quiet;
        std::thread([] {
            std::puts("a line of the host");
            speak();
        }).join();
        {
            const scan::QuietLibrary inner;
            speak();
        }
        speak();
        std::puts("another line");
    }
    speak();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "a line of the host\n" + line + "another line\n" + line);
}

TEST(MessageSink, GetsWholeMessagesWithItsContext) {
    std::string heard;
    const clutter::MessageSink sink(
        [](void* context, const char* text) { *static_cast<std::string*>(context) += text; },
        &heard);
    speak();
    speak();
    EXPECT_EQ(heard,
              "nrays and ngates should be positive!\nnrays and ngates should be positive!\n");
    EXPECT_EQ(clutter_get_message_sink(nullptr, nullptr), CLUTTER_INVALID_ARGUMENT);
}

TEST(Seed, RepeatsTheDrawsOfItsThreadAlone) {
    CDSP toolkit;
    const auto draw = [&toolkit](std::vector<double> values) {
        toolkit.GenerateRandomNoise(values.data(), static_cast<int>(values.size()), 0.0, 1.0);
        return values;
    };
    const std::vector<double> none(100);
    std::vector<double> first, second, elsewhere;
    {
        const clutter::Seed seed(7);
        first = draw(none);
        second = draw(none);
        std::thread([&] {
            const clutter::Seed other(7);
            elsewhere = draw(none);
        }).join();
    }
    EXPECT_EQ(first, elsewhere);
    EXPECT_NE(first, second);
    EXPECT_NE(draw(none), draw(none));
    const clutter::Seed seed(8);
    EXPECT_NE(draw(none), first);
    const auto [lowest, highest] = std::minmax_element(first.begin(), first.end());
    EXPECT_GE(*lowest, 0);
    EXPECT_LE(*highest, 1);
    EXPECT_GT(*highest - *lowest, 0.9);
}

}  // namespace
