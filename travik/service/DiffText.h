#pragma once

#include <travik/service/ImageDiff.h>

#include <string>
#include <string_view>

/// What differs between two images, for a person and for a script.
namespace Travik {

/// What the two images are called.
struct DiffNames {
    std::string before;
    std::string after;
};

struct DiffTextOptions {
    bool isBrief = false;    ///< a line for each block
    bool isWhole = false;    ///< everything, however much it is
    bool isColoured = false; ///< with the escape sequences of a terminal
};

/// The text (UTF-8, safe for a terminal); empty where nothing differs. Each block that differs has a line that says
/// how, then its values, old and new, with what labels them; its header words and sums in one line; bytes that no field
/// covers in hexadecimal. Of a field with many differences come the largest, and how many there are; of thousands of
/// lines the first. A last line counts the blocks.
TRAVIK_SERVICE_EXPORT std::string diffText(const ImageDiff& diff, const DiffNames& names,
                                           const DiffTextOptions& options = {});

/// All of it as a JSON document, whose form is described in docs/json.md, and stable. What is no UTF-8 in a name is
/// replaced.
TRAVIK_SERVICE_EXPORT std::string diffDocument(const ImageDiff& diff, const DiffNames& names);

} // namespace Travik
