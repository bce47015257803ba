#include <travik/fleet/Collect.h>
#include <travik/registry/ModuleImage.h>
#include <travik/service/ImageFile.h>
#include <travik/service/OrderedJobs.h>

#include <chrono>
#include <ctime>
#include <utility>

namespace Travik {

namespace {

constexpr std::size_t batchFiles = 256;
constexpr std::int64_t batchBytes = std::int64_t{32} << 20;

/// Of a file that was written to so shortly before it was read, a further write might leave the same time.
constexpr std::int64_t tooRecentNs = 100'000'000;

std::int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string utcText(std::int64_t ns) {
    const std::time_t seconds = ns / 1'000'000'000;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::string text(32, '\0');
    text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts));
    return text;
}

/// What reading a file came to; one of these holds.
struct ReadFile {
    std::string why;     ///< it cannot be read
    std::string alien;   ///< it is no image
    bool isSame = false; ///< its content is the one that the sink has
    ImageRows rows;
};

ReadFile readFile(FoundFile& file, const std::optional<FleetSink::Known>& known) {
    ReadFile read;
    const std::int64_t now = nowNs();
    std::vector<char> bytes;
    bytes.reserve(static_cast<std::size_t>(file.stamp.size));
    read.why = readImageFile(file.path, bytes);
    if (!read.why.empty())
        return read;
    if (file.stamp.modifiedNs > now - tooRecentNs)
        file.stamp.modifiedNs = 0;
    const ModuleImage image(bytes);
    read.alien = whyNoImage(bytes, image);
    if (!read.alien.empty())
        return read;
    const std::string hash = contentHash(bytes);
    read.isSame = known && known->contentHash == hash;
    if (!read.isSame)
        read.rows = imageRows(file.path, file.stamp, hash, utcText(now), image);
    return read;
}

class Run {
public:
    Run(FleetSink& sink, const CollectOptions& options) : sink_(sink), options_(options) {}

    CollectCounts run(std::vector<std::string> paths) {
        FolderWalk walk(std::move(paths), [this](FolderWalk::Miss miss, const std::string& path,
                                                 const std::string& why) { tellMiss(miss, path, why); });
        while (gather(walk))
            useBatch();
        counts_.vanished += sink_.markVanished(walk.roots());
        return counts_;
    }

private:
    FleetSink& sink_;
    const CollectOptions& options_;
    CollectCounts counts_;
    std::vector<FoundFile> batch_;

    bool gather(FolderWalk& walk) {
        batch_.clear();
        std::int64_t bytes = 0;
        while (batch_.size() < batchFiles && bytes < batchBytes) {
            std::optional<FoundFile> found = walk.next();
            if (!found)
                break;
            if (sink_.isOwn(found->path))
                continue;
            bytes += found->stamp.size;
            batch_.push_back(std::move(*found));
        }
        return !batch_.empty();
    }

    void useBatch() {
        const std::vector<std::optional<FleetSink::Known>> known = sink_.known(batch_);
        std::vector<std::size_t> wanted;
        for (std::size_t i = 0; i < batch_.size(); ++i) {
            if (known[i] && known[i]->stamp == batch_[i].stamp && !known[i]->hasVanished)
                countUnchanged(*known[i]);
            else
                wanted.push_back(i);
        }
        options_.progress(counts_);
        if (wanted.empty())
            return;
        sink_.begin();
        const auto work = [&](std::size_t i) { return readFile(batch_[wanted[i]], known[wanted[i]]); };
        const auto deliver = [&](std::size_t i, const ReadFile& read) {
            take(batch_[wanted[i]], known[wanted[i]], read);
            options_.progress(counts_);
        };
        runOrdered(wanted.size(), options_.jobs, work, deliver);
        sink_.commit();
    }

    void countUnchanged(const FleetSink::Known& known) {
        ++counts_.images;
        ++counts_.unchanged;
        counts_.damaged += known.problems > 0 ? 1U : 0U;
    }

    void take(const FoundFile& file, const std::optional<FleetSink::Known>& known, const ReadFile& read) {
        if (!read.why.empty())
            return tellMiss(FolderWalk::Miss::Unreadable, file.path, read.why);
        if (!read.alien.empty()) {
            if (known && !known->hasVanished) {
                sink_.drop(file.path);
                ++counts_.vanished;
            }
            return tellAlien(file.path, read.alien, file.isNamed);
        }
        counts_.returned += known && known->hasVanished ? 1U : 0U;
        if (read.isSame) {
            sink_.renew(file);
            return countUnchanged(*known);
        }
        const FleetSink::Stored stored = sink_.store(read.rows);
        ++counts_.images;
        ++(stored == FleetSink::Stored::Added     ? counts_.added
           : stored == FleetSink::Stored::Changed ? counts_.changed
                                                  : counts_.unchanged);
        if (read.rows.problems > 0) {
            ++counts_.damaged;
            options_.tell({CollectNews::Kind::Damaged, file.path, read.rows.firstProblem,
                           static_cast<std::size_t>(read.rows.problems)});
        }
    }

    void tellMiss(FolderWalk::Miss miss, const std::string& path, const std::string& why) {
        if (miss == FolderWalk::Miss::NoFile)
            return tellAlien(path, why, false);
        const bool isUnreadable = miss == FolderWalk::Miss::Unreadable;
        ++(isUnreadable ? counts_.unreadable : counts_.seenFolders);
        options_.tell({isUnreadable ? CollectNews::Kind::Unreadable : CollectNews::Kind::SeenFolder, path, why});
    }

    void tellAlien(const std::string& path, const std::string& why, bool isNamed) {
        ++counts_.aliens;
        counts_.namedAliens += isNamed ? 1U : 0U;
        options_.tell({CollectNews::Kind::Alien, path, why});
    }
};

} // namespace

CollectCounts collect(std::vector<std::string> paths, FleetSink& sink, const CollectOptions& options) {
    return Run(sink, options).run(std::move(paths));
}

} // namespace Travik
