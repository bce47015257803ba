#include "Tool.h"

#include "Jobs.h"

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
    err() << "datablock: " << InLine{name} << ": " << why << '\n';
}

} // namespace

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
    err() << InLine{image.name} << ": offset " << offset << " (0x" << std::string_view(hex.data(), end) << ')';
    if (id)
        err() << ", block " << *id;
    err() << ": " << mark << text << '\n';
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

void addImagesOption(CLI::App& command, std::vector<std::string>& paths) {
    const auto take = [&paths](const CLI::results_t& names) {
        paths = names;
        return true;
    };
    // An option that may take more than it has to would have "[a,b]" taken apart, and would leave what follows "--" to
    // the parent once it has one. This one has to take all there are, and nobody counts them.
    constexpr int all = CLI::detail::expected_max_vector_size;
    command.add_option("image", CLI::callback_t(take), "Module images; - is standard input")
        ->expected(all, all)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->required();
}

void addBlockOption(CLI::App& command, std::vector<std::string>& patterns) {
    command
        .add_option("--block", patterns,
                    "Only the blocks of this identifier or key name, which may be a glob (\"RFBO_*\"); may be repeated")
        ->type_name("ID|KEY")
        ->allow_extra_args(false);
}

int reportMisses(const Image& image, const Travik::ModuleImage& module, const Travik::BlockSelector& selector) {
    if (module.blocks().empty())
        return reportFindings(image, module, false);
    const std::vector<std::string> misses = selector.misses(module);
    for (const std::string& miss : misses)
        err() << InLine{image.name} << ": " << InLine{miss} << '\n';
    return misses.empty() ? AllWell : DataWrong;
}

void refuseWord(const std::string& option, const std::string& word, std::string_view words) {
    throw CLI::ValidationError(option, '"' + word + "\" is none of " + std::string(words));
}

void addEncodingOption(CLI::App& command, Encoding& encoding) {
    addWordOption<Encoding>(command, "--encoding", encoding,
                            "How umlauts are written: latin1, as they are stored; utf8; auto: utf8 on a terminal only",
                            {{"auto", Encoding::Automatic},
                             {"latin1", Encoding::Latin1},
                             {"latin-1", Encoding::Latin1},
                             {"utf8", Encoding::Utf8},
                             {"utf-8", Encoding::Utf8}},
                            "auto, latin1 and utf8")
        ->type_name("auto|latin1|utf8");
}

} // namespace Tool
