#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/Export.h>

#include <functional>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Images as JSON documents, and back. The form is described in docs/json.md, and stable. Nothing is lost: what a
/// number or a text cannot carry travels as bytes beside it, so that any bytes whatever come back as they were.
namespace Travik {

/// Which part of an image goes into a document. What is left empty lets everything through. A document of a part says
/// so ("partial"), and is not built into an image.
struct DocumentFilter {
    std::function<bool(const ImageBlock&)> block;
    /// By the field's name. Blocks without such a field are left out.
    std::function<bool(std::string_view)> field;
};

/// One image as an object of a document. `image` is that of the `bytes`. What is no UTF-8 in the name is replaced.
/// Never fails.
TRAVIK_SERVICE_EXPORT std::string jsonObject(std::string_view name, std::span<const char> bytes,
                                             const ModuleImage& image, const DocumentFilter& filter = {});

/// The whole document, an array of the objects in their order. Empty ones are left out.
TRAVIK_SERVICE_EXPORT std::string jsonDocument(std::span<const std::string> objects);

/// The same into a stream, without a second copy of it all in memory.
TRAVIK_SERVICE_EXPORT void writeJsonDocument(std::ostream& os, std::span<const std::string> objects);

/// How a document is read.
struct BuildOptions {
    /// Which image of a document that holds several, by its "image"; empty: the only one.
    std::string image;
    /// Whether all checksums stay as the document has them; else blocks that were changed get fresh ones.
    bool keepChecksums = false;
    /// How long the image may become; as long as any file that is read as one.
    std::size_t largestSize = std::size_t{256} << 20U;
};

/// An image built, or why it was not.
struct BuiltImage {
    std::vector<char> bytes;
    /// Where in the document (as a JSON pointer) something is wrong, and what is expected there; one line. Empty where
    /// nothing is.
    std::string error;
};

/// The image of a document. Any text may be given.
TRAVIK_SERVICE_EXPORT BuiltImage buildImage(std::string_view document, const BuildOptions& options = {});

} // namespace Travik
