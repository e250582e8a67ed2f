/* Lists of file names, and the name at the end of a path. */
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::ByteVector;
using clutter::test::TempDir;

struct List {
    int result;
    std::vector<std::string> names;
};

/* Reads over a list that is held already. */
List readList(const std::string& text) {
    TempDir dir;
    std::string path = dir.file("list.txt");
    clutter::test::writeFile(path, ByteVector(text.begin(), text.end()));
    CDSP dsp;
    char* names = new char[3]{'o', 'l', '\0'};
    int count = -7;
    List list{dsp.OnReadFNames(path.data(), &names, count), {}};
    for (int i = 0; i < count; ++i) {
        list.names.push_back(names + 1024 * i);
    }
    if (list.result == 0) {
        list.names = {names, std::to_string(count)};
    }
    delete[] names;
    return list;
}

TEST(FileNameList, HoldsEveryToken) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(readList("a.uf  dir/b.uf\nc\r\nd\re").names,
              (Names{"a.uf", "dir/b.uf", "c", "d", "e"}));
    EXPECT_EQ(readList("").result, 1);
    EXPECT_EQ(readList(" \n\t").names, Names{});
    EXPECT_EQ(readList(std::string(1023, 'x') + " " + std::string(1024, 'y') + " " +
                       std::string(9999, 'z') + " w")
                  .names,
              (Names{std::string(1023, 'x'), std::string(1023, 'y'), std::string(1023, 'z'), "w"}));
}

TEST(FileNameList, RefusedListsLeaveTheOldOne) {
    using Names = std::vector<std::string>;
    std::string endless;
    for (int i = 0; i <= 1 << 20; ++i) {
        endless += "a ";
    }
    EXPECT_EQ(readList(endless).result, 0);
    EXPECT_EQ(readList(endless).names, (Names{"ol", "-7"}));
    CDSP dsp;
    char missing[] = "/nowhere/list.txt";
    char* names = nullptr;
    int count = -7;
    EXPECT_EQ(dsp.OnReadFNames(missing, &names, count), 0);
    EXPECT_EQ(dsp.OnReadFNames(nullptr, &names, count), 0);
    EXPECT_EQ(dsp.OnReadFNames(missing, nullptr, count), 0);
    EXPECT_EQ(count, -7);
}

TEST(FileNameOfAPath, FollowsTheLastBackslash) {
    struct Case {
        std::string path;
        int result;
        std::string name;
    };
    const Case cases[] = {{"c:\\data\\scan.uf", 1, "scan.uf"},
                          {"\\scan.uf", 1, "scan.uf"},
                          {"data\\", 1, ""},
                          {"/data/scan.uf", 0, "held"},
                          {"a\\b/c", 1, "b/c"},
                          {"", 0, "held"},
                          {"d\\" + std::string(1022, 'x'), 1, std::string(1022, 'x')},
                          {"d\\" + std::string(1023, 'x'), 0, " "},
                          {"d\\" + std::string(4000, 'x'), 0, " "}};
    CDSP dsp;
    for (Case c : cases) {
        char name[1024] = "held";
        EXPECT_EQ(dsp.getfnameonly(c.path.data(), name), c.result) << c.path;
        EXPECT_EQ(std::string(name), c.name) << c.path;
    }
    char name[] = "held";
    EXPECT_EQ(dsp.getfnameonly(nullptr, name), 0);
    EXPECT_EQ(dsp.getfnameonly(name, nullptr), 0);
}

}  // namespace
