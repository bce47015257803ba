// Runs a fuzz target over the files named on the command line, without a fuzzing engine and with any compiler.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <ios>
#include <memory>

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

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s INPUT...\n", argv[0]);
        return 2;
    }
    for (int i = 1; i < argc; ++i) {
        // Named before it runs: the last name printed is the input that ended the program. On standard error, because a
        // target may redirect or fill standard output.
        std::fprintf(stderr, "%s\n", argv[i]);
        if (!replay(argv[i])) {
            std::fprintf(stderr, "%s: cannot be read\n", argv[i]);
            return 2;
        }
    }
    std::fprintf(stderr, "%d inputs replayed\n", argc - 1);
    return 0;
}
