#include "files/Descriptor.h"

#include <travik/service/InPlaceWriter.h>

#include <cerrno>
#include <vector>

namespace Travik {

namespace {

struct Stretch {
    std::size_t begin;
    std::size_t end;
};

std::vector<Stretch> differences(std::span<const char> left, std::span<const char> right) {
    std::vector<Stretch> ranges;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (left[i] == right[i])
            continue;
        if (!ranges.empty() && ranges.back().end == i)
            ++ranges.back().end;
        else
            ranges.push_back({i, i + 1});
    }
    return ranges;
}

std::string describe(Stretch range) {
    const std::string first = std::to_string(range.begin);
    return range.end - range.begin == 1 ? "offset " + first
                                        : "offsets " + first + " to " + std::to_string(range.end - 1);
}

class InPlaceWriter {
public:
    InPlaceWriter(ByteDevice& device, std::span<const char> from) : device_(device), from_(from) {}

    /// Empty, or what failed.
    std::string put(std::span<const char> to) {
        for (const Stretch& range : differences(from_, to)) {
            touched_.push_back(range);
            if (std::string why = write(range, to); !why.empty())
                return why;
        }
        if (const int error = -device_.sync(); error != 0)
            return "cannot be brought to the medium: " + files::errorText(error);
        std::vector<char> now(to.size());
        if (std::string why = read(now); !why.empty())
            return why;
        const std::vector<Stretch> wrong = differences(now, to);
        return wrong.empty() ? ""
                             : "did not take the new bytes at " + describe({wrong.front().begin, wrong.back().end});
    }

    /// What is not as it was, or may not be.
    Stretch restore() {
        constexpr int attempts = 3;
        for (int attempt = 0;; ++attempt) {
            const bool isSynced = device_.sync() == 0;
            std::vector<char> now(from_.size());
            const bool isRead = read(now).empty();
            const std::vector<Stretch> wrong = isRead ? differences(now, from_) : touched_;
            if (isSynced && wrong.empty())
                return {0, 0};
            if (attempt == attempts)
                return hull(wrong.empty() ? touched_ : wrong);
            for (const Stretch& range : wrong)
                static_cast<void>(write(range, from_)); // each, whatever became of the others; it is read back
        }
    }

private:
    ByteDevice& device_;
    std::span<const char> from_;
    std::vector<Stretch> touched_;

    static Stretch hull(const std::vector<Stretch>& ranges) {
        return ranges.empty() ? Stretch{0, 0} : Stretch{ranges.front().begin, ranges.back().end};
    }

    /// Goes on until the end; what fails, fails at the offset that was reached.
    template <class Step>
    static std::string all(Stretch range, const char* what, Step step) {
        for (std::size_t at = range.begin; at < range.end;) {
            const std::ptrdiff_t count = step(at, range.end - at);
            if (count == -EINTR)
                continue;
            if (count <= 0)
                return what + (" at offset " + std::to_string(at)) + ": " +
                       files::errorText(count < 0 ? static_cast<int>(-count) : EIO);
            at += static_cast<std::size_t>(count);
        }
        return {};
    }

    std::string write(Stretch range, std::span<const char> bytes) {
        return all(range, "cannot be written",
                   [&](std::size_t at, std::size_t count) { return device_.writeAt(at, bytes.subspan(at, count)); });
    }

    std::string read(std::span<char> bytes) {
        return all({0, bytes.size()}, "cannot be read back",
                   [&](std::size_t at, std::size_t count) { return device_.readAt(at, bytes.subspan(at, count)); });
    }
};

} // namespace

ByteDevice::~ByteDevice() = default;

InPlaceReport writeInPlace(ByteDevice& device, std::span<const char> from, std::span<const char> to) {
    InPlaceReport report;
    if (from.size() != to.size()) {
        report.error = "has " + std::to_string(from.size()) + " bytes, which " + std::to_string(to.size()) +
                       " cannot be written in place of";
        return report;
    }
    InPlaceWriter writer(device, from);
    report.error = writer.put(to);
    if (report.succeeded())
        return report;
    const Stretch unknown = writer.restore();
    report.unknownBegin = unknown.begin;
    report.unknownEnd = unknown.end;
    report.error += report.isUndone() ? "; the old bytes were written back"
                                      : "; the old bytes could not be written back, " + describe(unknown) +
                                            (unknown.end - unknown.begin == 1 ? " is unknown" : " are unknown");
    return report;
}

} // namespace Travik
