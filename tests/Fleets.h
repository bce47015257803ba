#pragma once

#include "Support.h"

#include <travik/fleet/Collect.h>
#include <travik/fleet/FleetDatabase.h>
#include <travik/service/ImageFile.h>
#include <travik/service/Values.h>

#include <filesystem>
#include <fstream>

/// Files of images for what collects them.
namespace Fleets {

using namespace Travik;
namespace fs = std::filesystem;
/// images, added, changed, unchanged, vanished, returned, damaged, aliens, unreadable
using Counts = std::vector<std::size_t>;

/// A folder of its own, removed with it.
class Folder {
public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "travik-fleet-XXXXXX").string();
        path_ = fs::canonical(::mkdtemp(name.data()));
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(path_); }

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string path() const { return path_.string(); }

private:
    fs::path path_;
};

inline void write(const std::string& path, std::string_view bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    // So long ago that its time can be relied on.
    fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(1));
}

inline std::string sampleBytes(const std::string& name) {
    std::vector<char> bytes;
    EXPECT_EQ(readImageFile(std::string(TRAVIK_SAMPLES) + '/' + name, bytes), "");
    return {bytes.begin(), bytes.end()};
}

/// An attenuator of a serial number; its high-power counter may be set.
inline std::string attenuator(unsigned int serial, unsigned int highPower = 91) {
    std::string bytes = sampleBytes("step-attenuator.bin");
    const ModuleImage image{std::span<const char>(bytes)};
    const auto put = [&](const ImageBlock& block, std::size_t offset, unsigned int value) {
        for (std::size_t i = 0; i < 4; ++i)
            bytes[block.offset + offset + i] = static_cast<char>(value >> (8 * i));
        const std::string sealed = Support::sealed(bytes.substr(block.offset, block.bytes.size()));
        bytes.replace(block.offset, sealed.size(), sealed);
    };
    for (const ImageBlock& block : image.blocks()) {
        if (block.id == 2)
            put(block, 20, serial);
        if (block.id == 11302)
            put(block, BlockLayout(block).fields().back().offset, highPower);
    }
    return bytes;
}

inline Counts collected(const std::string& database, std::vector<std::string> paths,
                        std::vector<std::string>* told = nullptr, unsigned int jobs = 2) {
    FleetDatabase sink(database, FleetDatabase::Access::Write);
    CollectOptions options;
    options.jobs = jobs;
    if (told)
        options.tell = [&](const CollectNews& news) { told->push_back(news.path + ": " + news.text); };
    const CollectCounts counts = collect(std::move(paths), sink, options);
    return {counts.images,   counts.added,   counts.changed, counts.unchanged, counts.vanished,
            counts.returned, counts.damaged, counts.aliens,  counts.unreadable};
}

} // namespace Fleets
