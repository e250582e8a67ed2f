/* --json: one document a file, with the members that docs/program.md lists. */
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "program_scan.h"
#include "run_program.h"

namespace {

using testing::HasSubstr, testing::StartsWith;
using namespace clutter::test;

/* Prints the members of the documents on standard input as lines "sweeps[].number": both the
 * parser and the list are not the program's own. */
constexpr char kListMembers[] = R"PY(
import json, sys
def members(value, name=""):
    if isinstance(value, dict):
        for key, member in value.items():
            yield from members(member, f"{name}.{key}" if name else key)
    elif isinstance(value, list):
        for member in value:
            yield from members(member, name + "[]")
        yield name + "[]"
    else:
        yield name
for line in sys.stdin:
    print(*sorted(set(members(json.loads(line)))))
)PY";

class Json : public ProgramOnAScan {
  protected:
    void SetUp() override {
        ProgramOnAScan::SetUp();
        std::ofstream(directory_.file("members.py")) << kListMembers;
    }
    std::string membersOf(const std::string& call) {
        return runCommand(std::string(kProgram) + " " + call + " 2>/dev/null | python3 " +
                          directory_.file("members.py"))
            .out;
    }
};

TEST_F(Json, EveryDocumentHasItsMembers) {
    EXPECT_EQ(membersOf("info --json " + scan_),
              "altitude_m damage[] fields[] fields[].highest fields[].lowest fields[].median "
              "fields[].name fields[].present_percent fields[].role fields[].units file format "
              "latitude_deg longitude_deg notes[] radar radar_constant_db site sweeps[] "
              "sweeps[].first_gate_m sweeps[].fixed_angle_deg sweeps[].gate_spacing_m "
              "sweeps[].gates sweeps[].mode sweeps[].number sweeps[].nyquist_m_s sweeps[].rays "
              "time\n");
    const std::string classified = membersOf("classify --json " + scan_);
    for (const char* member :
         {"sweeps[].fields.zhh", "sweeps[].inputs[]", "sweeps[].gates_by_class.precipitation",
          "sweeps[].radar_constant_source", "sweeps[].seconds", "outputs[]"}) {
        EXPECT_THAT(classified, HasSubstr(member));
    }
    EXPECT_THAT(membersOf("process --json --what 21 " + scan_), HasSubstr("sweeps[].stages"));
    EXPECT_THAT(membersOf("clean --json " + scan_ + " -o " + directory_.file("rain.uf")),
                HasSubstr("outputs[]"));
}

TEST_F(Json, AFileThatFailsHasADocumentToo) {
    const std::string bad = directory_.file("bad.uf");
    std::ofstream(bad) << "no radar file";
    for (const char* jobs : {" -j 1 ", " -j 2 "}) {
        const std::string members = membersOf("classify --json " + bad + jobs + scan_);
        EXPECT_THAT(members, StartsWith("failure file\naltitude_m "));
    }
    EXPECT_THAT(membersOf("info --json " + bad), StartsWith("failure file\n"));
}

TEST_F(Json, TheDocumentSaysWhatTheSummarySays) {
    const std::string output = directory_.file("a \"b\".uf");
    const Outcome outcome =
        runProgram("classify --json " + scan_ + " --radar-constant 36.5 -o '" + output + "'");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\"radar_constant_db\": 36.5"));
    EXPECT_THAT(outcome.out, HasSubstr("\"radar_constant_source\": \"given\""));
    EXPECT_THAT(outcome.out, HasSubstr("a \\\"b\\\".uf\"]"));
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
}

}  // namespace
