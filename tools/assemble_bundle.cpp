// Puts the files of one firmware release together into a bundle:
//
//     assemble_bundle BUNDLE VERSION MIN_SOFTWARE_VERSION MEMBER...
//
// Members keep their order and are named as their files are. A file that would not come out of the
// bundle as it went in is refused: no bundle is written, and the exit status is 1.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

namespace
{
constexpr int usageError = 2;

bool complain(const std::string &what)
{
    std::cerr << "assemble_bundle: " << what << '\n';
    return false;
}

/// Whether text is a header value that a reader of bundles takes.
bool isHeaderValue(const std::string &text)
{
    return !text.empty() &&
           text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                  "0123456789_.") == std::string::npos;
}

/// What unpacking changes or cuts off; empty for a text that comes out as it went in.
std::string flawOf(const std::string &content)
{
    if (!content.empty() && content.back() != '\n')
        return "its last line has no end";
    if (content.find('\r') != std::string::npos)
        return "it holds a carriage return";
    std::istringstream lines(content);
    for (std::string line; std::getline(lines, line);) {
        // Which white space may stand in the mark is the reader's affair: no line comes near it.
        if (line.find("END FILE") != std::string::npos && line.find("\\\\\\") != std::string::npos)
            return "it holds the mark that ends a member";
    }
    return {};
}

bool appendMember(std::string &bundle, const std::filesystem::path &path)
{
    if (!std::filesystem::is_regular_file(path))
        return complain("no such file: " + path.string());
    std::ifstream file(path, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(file)), {});
    if (!file)
        return complain("cannot read " + path.string());
    const std::string flaw = flawOf(content);
    if (!flaw.empty())
        return complain(path.string() + " cannot be a member: " + flaw);
    bundle += "\n////// " + path.filename().string() + " //////\n" + content +
              "\\\\\\\\\\\\ END FILE \\\\\\\\\\\\\n";
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc < 4) {
        complain("usage: assemble_bundle BUNDLE VERSION MIN_SOFTWARE_VERSION MEMBER...");
        return usageError;
    }
    const std::string version = argv[2];
    const std::string minSoftware = argv[3];
    if (!isHeaderValue(version) || !isHeaderValue(minSoftware)) {
        complain("a version has only letters, digits, \"_\" and \".\"");
        return usageError;
    }

    std::string bundle = "...\nVERSION = " + version +
                         "\nMIN_SOFTWARE_VERSION_REQUIRED = " + minSoftware + "\n...\n";
    for (int i = 4; i < argc; ++i) {
        if (!appendMember(bundle, argv[i]))
            return 1;
    }

    std::ofstream out(argv[1], std::ios::binary | std::ios::trunc);
    out << bundle << std::flush;
    if (!out) {
        complain(std::string("cannot write ") + argv[1]);
        std::remove(argv[1]);
        return 1;
    }
    return 0;
}
