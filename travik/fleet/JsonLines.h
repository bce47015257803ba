#pragma once

#include <travik/fleet/FleetSink.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Travik {

/// How arrays have what is no finite number.
enum class NotFinite : unsigned char {
    Null, ///< JSON has nothing else
    Nan   ///< some databases that read JSON have no null in an array, yet nan
};

/// Appends the rows of a relation, each as a JSON object on a line of its own: `image` (the image's key), `module`,
/// then the columns.
TRAVIK_FLEET_EXPORT void appendJsonLines(std::string& text, Relation relation, const ImageRows& rows,
                                         NotFinite notFinite);

/// One relation as JSON lines, for any engine's bulk loader.
class TRAVIK_FLEET_EXPORT JsonLines : public FleetSink {
public:
    using Write = std::function<void(std::string_view)>;

    JsonLines(Relation relation, Write write) : relation_(relation), write_(std::move(write)) {}

    std::vector<std::optional<Known>> known(std::span<const FoundFile> files) override {
        return std::vector<std::optional<Known>>(files.size());
    }
    Stored store(const ImageRows& rows) override;

private:
    Relation relation_;
    Write write_;
};

} // namespace Travik
