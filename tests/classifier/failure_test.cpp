/*
 * Whatever fails is a status with a text, and leaves everything as it was.
 */
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <new>

#include "classifier/handle_scan.h"
#include "clutterclassifier/clutterclassifier.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

thread_local long allocationsLeft = -1;  // negative: as many as there are
thread_local long alive = 0;

void* allocate(std::size_t size) {
    if (allocationsLeft == 0) {
        return nullptr;
    }
    if (allocationsLeft > 0) {
        --allocationsLeft;
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    alive += memory != nullptr ? 1 : 0;
    return memory;
}

void release(void* memory) {
    alive -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

/* Nine, each with a bit of its own: textures first. */
TEST(InputTable, NamesEveryInput) {
    const char* const keys[] = {"zhh", "zdr", "pdp", "rhv", "vel", "ldr", "pdf", "rhv", "wid"};
    const clutter_input_info* info = nullptr;
    for (int i = 0; i < CLUTTER_INPUT_COUNT; ++i) {
        ASSERT_EQ(clutter_get_input(i, &info), CLUTTER_OK);
        EXPECT_EQ(std::string(info->field).substr(0, 3), keys[i]);
        EXPECT_EQ(info->bit, 1u << i);
        EXPECT_EQ(info->texture, i < 4 ? 1 : 0);
    }
    for (const int index : {-1, int{CLUTTER_INPUT_COUNT}}) {
        EXPECT_EQ(clutter_get_input(index, &info), CLUTTER_INVALID_ARGUMENT);
    }
    EXPECT_EQ(clutter_get_input(0, nullptr), CLUTTER_INVALID_ARGUMENT);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* memory = allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

namespace {

using namespace clutter::test;
using clutter::Classifier;

/* Runs an operation with 0, 1, 2 ... allocations until it succeeds; each failure must pass judge.
 */
long countFailures(const std::function<bool()>& succeeds, const std::function<void()>& judge) {
    for (long allowed = 0;; ++allowed) {
        const long before = alive;
        allocationsLeft = allowed;
        const bool done = succeeds();
        allocationsLeft = -1;
        if (done) {
            return allowed;
        }
        EXPECT_EQ(alive, before) << "after " << allowed << " allocations";
        judge();
    }
}

TEST(FailingAllocation, IsAStatusAndLeaksNothing) {
    clutter_classifier* handle = nullptr;
    clutter_message message;
    clutter_status status = CLUTTER_OK;
    const long atCreation = countFailures(
        [&] {
            status = clutter_create(kMembershipDirectory, CLUTTER_ZHH_TEXTURE | CLUTTER_LDR,
                                    CLUTTER_WITH_ALL_CLUTTER, &handle, &message);
            return status == CLUTTER_OK;
        },
        [&] {
            EXPECT_EQ(status, CLUTTER_NO_MEMORY);
            EXPECT_STREQ(message.text, "not enough memory");
            EXPECT_EQ(handle, nullptr);
        });
    EXPECT_GT(atCreation, 50);

    TestScan scan = makeTestScan(6, 300, 1);
    const clutter_scan given = handleScan(scan);
    for (const int variant : {0, 1, 2, 3}) {
        clutter_options options = handleOptions();
        options.neighbourhood_gates = options.neighbourhood_rays = variant >= 2 ? 3 : 0;
        options.all_clutter = variant == 3;
        Answer answer(given);
        const std::vector<float> untouched = answer.margin;
        clutter_result result = answer.request();
        if (variant == 0) {
            result = {};
            result.size = sizeof result;
            result.classes = answer.classes.data();
        }
        const long failures = countFailures(
            [&] {
                status = clutter_classify(handle, &given, &options, &result, &message);
                return status == CLUTTER_OK;
            },
            [&] {
                EXPECT_EQ(status, CLUTTER_NO_MEMORY);
                EXPECT_EQ(answer.classes, std::vector<std::uint8_t>(answer.classes.size(), 99));
                EXPECT_EQ(answer.margin, untouched);
            });
        EXPECT_GT(failures, 10) << variant;
    }
    for (const int window : {0, 3}) {
        clutter_options options = handleOptions();
        options.neighbourhood_gates = options.neighbourhood_rays = window;
        clutter_explanation explanation = {};
        explanation.size = sizeof explanation;
        countFailures(
            [&] {
                status = clutter_explain(handle, &given, &options, 2, 100, &explanation, &message);
                return status == CLUTTER_OK;
            },
            [&] {
                EXPECT_EQ(status, CLUTTER_NO_MEMORY);
                EXPECT_EQ(explanation.inputs, 0u);
            });
        EXPECT_NE(explanation.inputs, 0u);
    }
    clutter_status reset = CLUTTER_OK;
    const long atReset = countFailures(
        [&] {
            reset = clutter_reset(handle, kMembershipDirectory, CLUTTER_RHOHV, 0, &message);
            return reset == CLUTTER_OK;
        },
        [&] {
            EXPECT_EQ(reset, CLUTTER_NO_MEMORY);
            Answer answer(given);
            clutter_result result = answer.request();
            EXPECT_EQ(clutter_classify(handle, &given, nullptr, &result, nullptr), CLUTTER_OK)
                << "the functions that it had";
        });
    EXPECT_GT(atReset, 10);
    const long before = alive;
    EXPECT_EQ(clutter_destroy(handle), CLUTTER_OK);
    EXPECT_LT(alive, before);
}

TEST(FailingAllocation, LeavesTheOutputOfTheEntryPoint) {
    TestScan scan = makeTestScan(6, 300, 1);
    std::vector<double> output(1800, 99.0);
    const std::vector<double> untouched = output;
    testing::internal::CaptureStdout();
    const long failures = countFailures(
        [&] {
            clutterclassifier(kMembershipDirectory, 6, 300, scan.field(0), scan.field(1),
                              scan.field(2), scan.field(3), scan.field(4), scan.field(5),
                              scan.field(6), scan.ranges.data(), scan.azimuths.data(),
                              &scan.elevation, scan.params, output.data());
            return output[0] != 99.0;
        },
        [&] { EXPECT_EQ(output, untouched); });
    EXPECT_GT(failures, 50);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

/* A copy of the packaged set in which one file is another. */
class DamagedSet {
  public:
    DamagedSet() {
        for (const auto& entry : std::filesystem::directory_iterator(kMembershipDirectory)) {
            std::filesystem::copy(entry.path(), directory_.file(entry.path().filename().string()));
        }
        std::filesystem::remove(victim());
    }
    std::string victim() const { return directory_.file("cal_mf_sZdr_precipi.dat"); }
    const std::string& path() const { return directory_.path(); }

  private:
    TempDir directory_;
};

TEST(Creation, SaysWhichFileAndLineAndWhatIsWrong) {
    const struct {
        const char* contents;  // null: a pipe
        clutter_status status;
        const char* text;
    } cases[] = {
        {"", CLUTTER_MALFORMED, ": holds no points"},
        {" \n\n", CLUTTER_MALFORMED, ": holds no points"},
        {"0 1\n1 0.5\n\n2", CLUTTER_MALFORMED, ": line 4: an abscissa without a degree"},
        {"0 1\n1 one\n", CLUTTER_MALFORMED, ": line 2: \"one\" is not a finite number"},
        {"0 1\n1 0.5x\n", CLUTTER_MALFORMED, ": line 2: \"0.5x\" is not a finite number"},
        {"0 1\n\n1\nnan", CLUTTER_MALFORMED, ": line 4: \"nan\" is not a finite number"},
        {"0 1\n1e999 1", CLUTTER_MALFORMED, ": line 2: \"1e999\" is not a finite number"},
        {"0 1\n\033[2J 1", CLUTTER_MALFORMED, ": line 2: \"?[2J\" is not a finite number"},
        {"1 1\n0.5 1\n", CLUTTER_MALFORMED, ": line 2: the abscissa is below the one before"},
        {"0 1\n1 -0.1\n", CLUTTER_MALFORMED, ": line 2: the degree is negative"},
        {nullptr, CLUTTER_NOT_READ, ": is not a regular file"},
    };
    for (const auto& c : cases) {
        const DamagedSet set;
        if (c.contents != nullptr) {
            writeText(set.victim(), c.contents);
        } else {
            ASSERT_EQ(mkfifo(set.victim().c_str(), 0600), 0);
        }
        clutter_classifier* handle = nullptr;
        clutter_message message;
        EXPECT_EQ(clutter_create(set.path().c_str(), 0, 0, &handle, &message), c.status);
        EXPECT_EQ(message.text, set.victim() + c.text);
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(clutter_create(set.path().c_str(), CLUTTER_ALL_INPUTS & ~CLUTTER_ZDR_TEXTURE, 0,
                                 &handle, &message),
                  CLUTTER_OK)
            << "a file that is not needed";
        EXPECT_STREQ(message.text, "");
        clutter_destroy(handle);
    }
}

TEST(Creation, JudgesItsArguments) {
    clutter_classifier* handle = nullptr;
    clutter_message message;
    const std::string missing = "/nowhere/at/all";
    EXPECT_EQ(clutter_create(missing.c_str(), 0, 0, &handle, &message), CLUTTER_NOT_READ);
    EXPECT_EQ(message.text, missing + ": No such file or directory");
    EXPECT_EQ(clutter_create("/dev/null", 0, 0, &handle, &message), CLUTTER_NOT_READ);
    EXPECT_STREQ(message.text, "/dev/null: is not a directory");
    const TempDir empty;
    EXPECT_EQ(clutter_create(empty.path().c_str(), 0, 0, &handle, &message), CLUTTER_NOT_READ);
    EXPECT_EQ(message.text, empty.path() + "/cal_mf_sZhh_clutter.dat: No such file or directory");
    EXPECT_EQ(clutter_create(nullptr, 0, 0, &handle, nullptr), CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_create("", 0, 0, &handle, nullptr), CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_create(kMembershipDirectory, 512, 0, &handle, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_create(kMembershipDirectory, 0, 2, &handle, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_create(kMembershipDirectory, 0, 0, nullptr, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(handle, nullptr);
    for (int status = -1; status < 9; ++status) {
        EXPECT_STRNE(clutter_status_text(status), "");
    }
    EXPECT_THROW(Classifier("/nowhere"), clutter::Error);
}

TEST(Reset, KeepsWhatWasReadWhenItFails) {
    Classifier classifier(kMembershipDirectory, CLUTTER_ZHH_TEXTURE);
    TestScan scan = makeTestScan(6, 90, 1);
    clutter_options options = handleOptions();
    options.inputs = CLUTTER_ZHH_TEXTURE;
    const auto before = classesOnly(classifier, handleScan(scan), options);
    EXPECT_THROW(classifier.reset("/nowhere"), clutter::Error);
    EXPECT_EQ(classesOnly(classifier, handleScan(scan), options), before);
    classifier.reset(kMembershipDirectory, CLUTTER_LDR);
    EXPECT_THROW(classesOnly(classifier, handleScan(scan), options), clutter::Error);
}

/* One thing wrong a row; everything else is as it should be. */
TEST(Classification, RefusesWhatMakesNoSense) {
    const Classifier classifier(kMembershipDirectory, CLUTTER_TEXTURES);
    TestScan test = makeTestScan(3, 20, 1);
    struct Call {
        clutter_scan scan;
        clutter_options options;
        clutter_result result;
    };
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        std::function<void(Call&)> spoil;
        const char* text;
    } cases[] = {
        {[](Call& c) { c.scan.size = 8; }, "scan.size is not set"},
        {[](Call& c) { c.options.size = 0; }, "options.size is not set"},
        {[](Call& c) { c.result.size = 0; }, "result.size is not set"},
        {[](Call& c) { c.scan.rays = 0; }, "rays and gates must be at least 1"},
        {[](Call& c) { c.scan.gates = -1; }, "rays and gates must be at least 1"},
        {[](Call& c) { c.scan.rays = std::int64_t{1} << 40; }, "more than 2^24 rays or gates"},
        {[](Call& c) { c.scan.zdr.stride = 19; }, "a stride is smaller than a ray"},
        {[](Call& c) { c.result.stride = -20; }, "a stride is smaller than a ray"},
        {[](Call& c) { c.scan.zdr.stride = PTRDIFF_MAX / 2; }, "a stride is too large"},
        {[](Call& c) { c.scan.zdr.type = 7; }, "the type of a field is not known"},
        {[](Call& c) { c.scan.zhh.values = nullptr; }, "noise needs zhh, snr or a mask of its own"},
        {[](Call& c) { c.scan.gate_spacing_m = 0.0; }, "gate_spacing_m is not positive"},
        {[&](Call& c) { c.scan.gate_spacing_m = infinity; }, "gate_spacing_m is not positive"},
        {[](Call& c) { c.scan.radar_constant_db = kNan; }, "radar_constant_db is not a number"},
        {[](Call& c) { c.scan.min_snr_db = kNan; }, "min_snr_db is not a number"},
        {[](Call& c) { c.options.inputs = 1024; }, "inputs has bits that are not inputs"},
        {[](Call& c) { c.options.inputs = CLUTTER_LDR; }, "input ldr: its functions were not read"},
        {[](Call& c) {
             c.options.inputs = CLUTTER_ZDR_TEXTURE;
             c.scan.zdr.values = nullptr;
         },
         "input zdr-texture: its field is not given"},
        {[](Call& c) { c.options.texture_gates = 4; },
         "the texture's window is not odd, or of one gate only"},
        {[](Call& c) { c.options.texture_gates = c.options.texture_rays = 1; },
         "the texture's window is not odd, or of one gate only"},
        {[](Call& c) { c.options.neighbourhood_gates = 3; },
         "the neighbourhood is not odd, or too large"},
        {[](Call& c) { c.options.neighbourhood_gates = c.options.neighbourhood_rays = 103; },
         "the neighbourhood is not odd, or too large"},
        {[](Call& c) { c.options.all_clutter = 1; },
         "all_clutter: the functions of sea clutter and wind turbines were not read"},
    };
    for (const auto& c : cases) {
        Answer answer(handleScan(test));
        Call call = {handleScan(test), handleOptions(), answer.request()};
        c.spoil(call);
        clutter_message message;
        const clutter_status status = clutter_classify(classifier.handle(), &call.scan,
                                                       &call.options, &call.result, &message);
        EXPECT_STREQ(message.text, c.text);
        EXPECT_TRUE(status == CLUTTER_INVALID_ARGUMENT || status == CLUTTER_TOO_LARGE);
        EXPECT_EQ(answer.classes, std::vector<std::uint8_t>(60, 99)) << c.text;
    }
    const clutter_scan scan = handleScan(test);
    clutter_explanation explanation = {};
    explanation.size = sizeof explanation;
    EXPECT_EQ(clutter_explain(classifier.handle(), &scan, nullptr, 3, 0, &explanation, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_classify(nullptr, &scan, nullptr, nullptr, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_classify(classifier.handle(), nullptr, nullptr, nullptr, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_classify(classifier.handle(), &scan, nullptr, nullptr, nullptr),
              CLUTTER_INVALID_ARGUMENT);
    EXPECT_EQ(clutter_destroy(nullptr), CLUTTER_OK);
}

/* A host that was compiled with a later version may set members that are not known here. */
TEST(Classification, TakesLargerStructsUnlessTheyAskForMore) {
    const Classifier classifier(kMembershipDirectory, CLUTTER_TEXTURES);
    TestScan test = makeTestScan(3, 20, 1);
    struct Later {
        clutter_options known;
        long long unknown;
    } later = {handleOptions(), 0};
    later.known.size = sizeof later;
    EXPECT_NO_THROW(classesOnly(classifier, handleScan(test), later.known));
    later.unknown = 1;
    EXPECT_THROW(classesOnly(classifier, handleScan(test), later.known), clutter::Error);
}

/* A pipe without a writer, in place of a membership file. */
TEST(EntryPoint, DoesNotWaitForAPipe) {
    const DamagedSet set;
    ASSERT_EQ(mkfifo(set.victim().c_str(), 0600), 0);
    TestScan scan = makeTestScan(3, 20, 1);
    scan.params[1] = -200.0;  // every gate is an echo
    std::vector<double> output(60);
    testing::internal::CaptureStdout();
    clutterclassifier((set.path() + "/").c_str(), 3, 20, scan.field(0), scan.field(1), nullptr,
                      nullptr, nullptr, nullptr, nullptr, scan.ranges.data(), scan.azimuths.data(),
                      &scan.elevation, scan.params, output.data());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Membership function not found: " + set.victim() + "!\n");
}

}  // namespace
