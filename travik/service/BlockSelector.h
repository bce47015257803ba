#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/Export.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How a person names blocks and fields: exactly, or by a glob; and what was meant where nothing is called so.
namespace Travik {

/// Any number of names, each of which may be a glob: "*" stands for any characters, "?" for one, "[a-z]" for one of
/// these, as in a shell. Upper and lower case differ.
class TRAVIK_SERVICE_EXPORT NameSelector {
public:
    /// Selects everything.
    NameSelector() = default;
    /// Selects what one of the patterns matches; everything where there is none.
    explicit NameSelector(std::vector<std::string> patterns) : patterns_(std::move(patterns)) {}

    bool selectsAll() const { return patterns_.empty(); }
    bool selects(std::string_view name) const;
    const std::vector<std::string>& patterns() const { return patterns_; }

    /// Whether the pattern, which may be a glob, matches the name.
    static bool matches(const std::string& pattern, std::string_view name);

private:
    std::vector<std::string> patterns_;
};

/// The same for blocks, each of which has two names: its identifier in decimal, and its key.
class TRAVIK_SERVICE_EXPORT BlockSelector {
public:
    BlockSelector() = default;
    explicit BlockSelector(std::vector<std::string> patterns) : names_(std::move(patterns)) {}

    bool selectsAll() const { return names_.selectsAll(); }
    const std::vector<std::string>& patterns() const { return names_.patterns(); }
    bool selects(const ImageBlock& block) const;
    /// Of a block that need not be in an image; the key in UTF-8, empty where it has none.
    bool selects(int id, std::string_view key) const;

    /// What is to be said of each pattern that selects no block of the image: "no block RFBO_TEMPREF; near:
    /// RFBO_TEMP_REF". What is near is sought among the keys of the catalogue and of the image.
    std::vector<std::string> misses(const ModuleImage& image) const;

private:
    NameSelector names_;
};

/// The candidates that may have been meant by a name, the nearest first, at most `limit`: those that differ by few
/// characters or only in case, and those that contain the name. None for a glob or a number.
TRAVIK_SERVICE_EXPORT std::vector<std::string> nearNames(std::string_view name, std::span<const std::string> candidates,
                                                         std::size_t limit = 3);

/// "no <kind> <name>", and where there are any "; near: " and the near names.
TRAVIK_SERVICE_EXPORT std::string noSuchName(std::string_view kind, std::string_view name,
                                             std::span<const std::string> candidates);

} // namespace Travik
