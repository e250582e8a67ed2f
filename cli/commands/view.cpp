/* view.cpp - the command `view`: scans inside a copy of the studio, a page for any browser. */
#include <spawn.h>
#include <sys/wait.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "options/input_file.h"
#include "options/membership_dir.h"
#include "report/failure.h"
#include "report/terminal.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/writing/output_file.h"
#include "scan/own_file.h"

extern char** environ;

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr char kPage[] = "clutterclassifier-studio.html";
constexpr char kPlace[] = "<!--SCANS-->";

struct ViewArguments {
    std::vector<std::string> inputs;
    std::string output;
};

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file) {
        throw std::runtime_error("cannot be read");
    }
    return bytes;
}

/* The page as it was built, with the place where scans go. */
std::string studioPage() {
    const char* variable = std::getenv("CLUTTERCLASSIFIER_STUDIO");
    const fs::path path =
        variable != nullptr && *variable != '\0' ? fs::path(variable) : shippedDirectory() / kPage;
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        throw std::runtime_error("the studio is not installed: there is no " +
                                 forTerminal(path.string()) + " (script/studio builds it)");
    }
    std::string page = contentsOf(path);
    if (page.find(kPlace) == std::string::npos) {
        throw std::runtime_error(forTerminal(path.string()) + " is not the studio");
    }
    return page;
}

std::string base64(const std::string& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](std::size_t k) -> unsigned {
            return i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U;
        };
        const unsigned three = byte(0) << 16U | byte(1) << 8U | byte(2);
        text += kDigits[three >> 18U];
        text += kDigits[three >> 12U & 63U];
        text += i + 1 < bytes.size() ? kDigits[three >> 6U & 63U] : '=';
        text += i + 2 < bytes.size() ? kDigits[three & 63U] : '=';
    }
    return text;
}

/* A text as the value of an attribute of HTML. */
std::string attributeText(const std::string& text) {
    std::string quoted;
    for (const char c : forTerminal(text)) {
        switch (c) {
            case '&':
                quoted += "&amp;";
                break;
            case '<':
                quoted += "&lt;";
                break;
            case '"':
                quoted += "&quot;";
                break;
            default:
                quoted += c;
        }
    }
    return quoted;
}

/* The scan as the page finds it. A file that is no scan is refused here, not in the browser. */
std::string embedded(const InputFile& input, std::size_t number) {
    readInput(input, {});
    const std::string name = fs::path(input.name()).filename().string();
    return "<script type=\"application/octet-stream\" id=\"scan-" + std::to_string(number) +
           "\" data-scan=\"" + attributeText(name) + "\">" + base64(contentsOf(input.path())) +
           "</script>\n";
}

void write(const std::string& path, const std::string& page) {
    scan::OutputFile file(path);
    scan::requireWritten(file, [&] {
        std::ofstream stream(file.temporary(), std::ios::binary);
        stream << page;
        stream.close();
        return stream.good();
    });
    file.commit();
}

/* Whether the desktop's own program took the file. */
bool openInBrowser(const std::string& path) {
    std::string program = "xdg-open", file = path;
    char* arguments[] = {program.data(), file.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0) {
        return false;
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/* A file of one's own that stays for the browser. */
std::string temporaryPage() {
    std::string pattern = (fs::temp_directory_path() / "clutterclassifier-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder can be made in " +
                                 forTerminal(fs::temp_directory_path().string()));
    }
    return pattern + "/" + kPage;
}

void view(const ViewArguments& arguments) {
    std::string page = studioPage();
    std::string scans;
    for (std::size_t i = 0; i < arguments.inputs.size(); ++i) {
        const InputFile input(arguments.inputs[i]);
        naming(input.name(), [&] { scans += embedded(input, i); });
    }
    page.replace(page.find(kPlace), sizeof kPlace - 1, scans);
    const bool show = arguments.output.empty();
    const std::string path = show ? temporaryPage() : arguments.output;
    write(path, page);
    std::printf("wrote %s\n", forTerminal(path).c_str());
    if (show && !openInBrowser(path)) {
        std::printf("open it in a browser\n");
    }
}

}  // namespace

void addViewCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("view", "Open scans in a browser, to look and to try");
    const auto arguments = std::make_shared<ViewArguments>();
    command->add_option("INPUT", arguments->inputs, kInputHelp)->required();
    command->add_option("-o,--output", arguments->output,
                        "Page to write, .html (default: one in the folder of temporary files, "
                        "which is opened)");
    command->footer(
        "The scans are inside the page, which makes no request to any network.\n"
        "Example: clutterclassifier view scan.uf");
    command->callback([arguments] { view(*arguments); });
}

}  // namespace cli
