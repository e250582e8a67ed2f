#include "scan/quiet_library.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>

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

}  // namespace
