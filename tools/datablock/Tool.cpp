#include "Tool.h"

#include "Jobs.h"

#include <travik/service/ImageFile.h>

#include <unistd.h>

#include <array>
#include <charconv>
#include <iostream>

namespace Tool {

namespace {

void fail(const std::string& name, const std::string& why) { err() << "datablock: " << name << ": " << why << '\n'; }

} // namespace

bool writeFileAtomically(const std::string& path, std::span<const char> bytes) {
    const std::string why = Travik::writeImageFile(path, bytes);
    if (!why.empty())
        fail(path == "-" ? "standard output" : path, why);
    return why.empty();
}

std::optional<Image> readImage(const std::string& path) {
    Image image{path == "-" ? "standard input" : path, {}};
    const std::string why = Travik::readImageFile(path, image.bytes);
    if (why.empty())
        return image;
    fail(image.name, why);
    return std::nullopt;
}

void reportProblem(const Image& image, std::size_t offset, unsigned short id, std::string_view text) {
    std::array<char, 16> hex;
    const char* const end = std::to_chars(hex.data(), hex.data() + hex.size(), offset, 16).ptr;
    err() << image.name << ": offset " << offset << " (0x" << std::string_view(hex.data(), end) << "), block " << id
          << ": " << text << '\n';
}

int reportProblems(const Image& image, const std::vector<Travik::ImageProblem>& problems) {
    for (const Travik::ImageProblem& problem : problems)
        reportProblem(image, problem.offset, problem.id, problem.text);
    return problems.empty() ? AllWell : DataWrong;
}

std::string keyOf(const Travik::ImageBlock& block) {
    if (block.isSecondEdition)
        return "USER_" + std::to_string(block.id);
    return block.entry ? block.entry->key(*block.entry, block.id) : std::string();
}

void addBlockOption(CLI::App& command, std::vector<std::string>& patterns) {
    command
        .add_option("--block", patterns,
                    "Only the blocks of this identifier or key name, which may be a glob (\"RFBO_*\"); may be repeated")
        ->type_name("ID|KEY")
        ->allow_extra_args(false);
}

int reportMisses(const Image& image, const Travik::ModuleImage& module, const Travik::BlockSelector& selector) {
    const std::vector<std::string> misses = selector.misses(module);
    for (const std::string& miss : misses)
        err() << image.name << ": " << miss << '\n';
    return misses.empty() ? AllWell : DataWrong;
}

void addEncodingOption(CLI::App& command, Encoding& encoding) {
    static const std::map<std::string, Encoding> names{
        {"auto", Encoding::Automatic}, {"latin1", Encoding::Latin1}, {"utf8", Encoding::Utf8}};
    command
        .add_option("--encoding", encoding,
                    "How umlauts are written: latin1, as they are stored; utf8; auto: utf8 on a terminal only")
        ->transform(CLI::CheckedTransformer(names, CLI::ignore_case).description(""))
        ->type_name("auto|latin1|utf8");
}

std::string toUtf8(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char character : latin1) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            utf8 += character;
        } else {
            utf8 += static_cast<char>(0xC0U | (code >> 6U));
            utf8 += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return utf8;
}

bool writeText(std::string_view latin1, Encoding encoding) {
    const bool utf8 = encoding == Encoding::Utf8 || (encoding == Encoding::Automatic && ::isatty(STDOUT_FILENO) == 1);
    if (utf8)
        std::cout << toUtf8(latin1);
    else
        std::cout << latin1;
    return std::cout.good();
}

} // namespace Tool
