#include "Tool.h"

#include <travik/service/ImageFile.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <iterator>

namespace Tool {

namespace {

void fail(const std::string& name, const std::string& why) {
    std::cerr << "datablock: " << name << ": " << why << '\n';
}

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

namespace {

void report(const Image& image, std::size_t offset, std::optional<unsigned short> id, std::string_view mark,
            std::string_view text) {
    std::array<char, 16> hex;
    const char* const end = std::to_chars(hex.data(), hex.data() + hex.size(), offset, 16).ptr;
    // In one piece: standard error is not buffered.
    std::string line = image.name + ": offset " + std::to_string(offset) + " (0x" +
                       std::string(hex.data(), static_cast<std::size_t>(end - hex.data())) + ")";
    if (id)
        line += ", block " + std::to_string(*id);
    std::cerr << line.append(": ").append(mark).append(text).append("\n");
}

bool isDamage(const Travik::ImageFinding& finding) { return finding.grade() == Travik::Grade::Damage; }

} // namespace

void reportProblem(const Image& image, std::size_t offset, unsigned short id, std::string_view text) {
    report(image, offset, id, {}, text);
}

void reportFinding(const Image& image, const Travik::ImageFinding& finding) {
    report(image, finding.offset, finding.id, isDamage(finding) ? "" : "note: ", finding.text);
}

int reportProblems(const Image& image, const std::vector<Travik::ImageFinding>& findings) {
    for (const Travik::ImageFinding& finding : findings)
        reportFinding(image, finding);
    return std::ranges::any_of(findings, isDamage) ? DataWrong : AllWell;
}

int reportFindings(const Image& image, const Travik::ModuleImage& module, bool notes) {
    int status = AllWell;
    const auto tell = [&](const Travik::ImageFinding& finding) {
        reportFinding(image, finding);
        status = isDamage(finding) ? DataWrong : status;
    };
    if (notes)
        module.visitFindings(tell);
    else
        module.visitProblems(tell);
    return status;
}

int reportForTexts(const Image& image, const std::vector<Travik::ImageFinding>& findings) {
    std::vector<Travik::ImageFinding> told;
    std::ranges::copy_if(findings, std::back_inserter(told), [](const Travik::ImageFinding& finding) {
        return isDamage(finding) || finding.finding == Travik::Finding::UnknownIdentifier;
    });
    return reportProblems(image, told);
}

int reportMissing(const Image& image, const Travik::ModuleImage& module, const std::string& selector) {
    if (module.blocks().empty())
        reportFindings(image, module, false);
    else
        std::cerr << image.name << ": no block " << selector << '\n';
    return DataWrong;
}

std::string keyOf(const Travik::ImageBlock& block) {
    if (block.isSecondEdition)
        return "USER_" + std::to_string(block.id);
    return block.entry ? block.entry->key(*block.entry, block.id) : std::string();
}

bool isSelected(const Travik::ImageBlock& block, const std::string& selector) {
    return selector == std::to_string(block.id) || selector == keyOf(block);
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
