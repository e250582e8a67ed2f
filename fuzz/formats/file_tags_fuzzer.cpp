/*
 * Takes file names apart: site, elevation and time of polar data files, the name without its
 * directory, stamps of 14 digits. The input is the name.
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Ctiempo.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;

void takeTags(std::string name) {
    CThuPolDaFor polar;
    for (const char separator : {'/', '\\'}) {
        int elevation = 77, site = 77;
        unsigned time = 77;
        polar.GetCharacteristics(name.data(), elevation, time, site, separator);
        require(site >= -1 && site <= 2, "a site is one of three, or unknown");
        require(elevation >= -99 && elevation <= 9, "an elevation is a digit, or unknown");
    }
}

void takeName(std::string path) {
    CDSP dsp;
    char name[1024] = "untouched";
    const int result = dsp.getfnameonly(path.data(), name);
    require(std::memchr(name, '\0', sizeof name) != nullptr, "a name is terminated");
    const std::size_t slash = path.rfind('\\');
    require(result == 0 || path.substr(slash + 1) == name, "a name is what follows the last one");
}

/* A stamp of a real date says what the calendar says. */
void takeStamp(std::string text) {
    Ctiempo time;
    unsigned seconds = 77;
    int stamp[6] = {}, back[6] = {};
    if (time.ReadYYYYMMDDHHMMSS(text.data(), seconds, stamp) == 0) {
        require(seconds == 0 && text.size() != 14, "a stamp has 14 characters");
        return;
    }
    time.GetDateTime(seconds, back, nullptr, nullptr);
    require(time.GetSecondsSince1970(back) == seconds, "a date and its seconds belong together");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::min(text.find('\0'), text.size()));  // a C text ends at its first zero
    takeTags(text);
    takeName(text);
    takeStamp(text);
    takeStamp(text.substr(0, 14));
    return 0;
}
