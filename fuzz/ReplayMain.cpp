// Runs a fuzz target over the files named on the command line, and those in the folders named, without a fuzzing engine
// and with any compiler.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <ios>
#include <memory>
#include <span>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (size < 0)
        return false;
    // An array of exactly the input's length, so that a sanitizer sees a read of one byte too many.
    const auto length = static_cast<std::size_t>(size);
    const auto input = std::make_unique<char[]>(length);
    if (!file.seekg(0).read(input.get(), size))
        return false;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.get()), length);
    return true;
}

/// The files in the order of their names.
std::vector<std::string> filesOf(std::span<char* const> arguments) {
    std::vector<std::string> files;
    for (const char* const argument : arguments) {
        if (!std::filesystem::is_directory(argument)) {
            files.emplace_back(argument);
            continue;
        }
        std::vector<std::string> inside;
        for (const auto& entry : std::filesystem::directory_iterator(argument))
            inside.push_back(entry.path().string());
        std::sort(inside.begin(), inside.end());
        files.insert(files.end(), inside.begin(), inside.end());
    }
    return files;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s INPUT...\n", argv[0]);
        return 2;
    }
    const std::vector<std::string> files = filesOf(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    for (const std::string& file : files) {
        // Named before it runs: the last name printed is the input that ended the program. On standard error, because a
        // target may redirect or fill standard output.
        std::fprintf(stderr, "%s\n", file.c_str());
        if (!replay(file.c_str())) {
            std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
            return 2;
        }
    }
    std::fprintf(stderr, "%zu inputs replayed\n", files.size());
    return 0;
}
