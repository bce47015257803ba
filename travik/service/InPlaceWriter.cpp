#include <travik/service/InPlaceWriter.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

namespace Travik {

namespace {

struct Stretch {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool isEmpty() const { return begin == end; }
    void join(Stretch other) {
        *this = isEmpty() ? other : Stretch{std::min(begin, other.begin), std::max(end, other.end)};
    }
};

/// Calls the function with each run of bytes that differ, in ascending order.
template <class Function>
void forEachDifference(std::span<const char> left, std::span<const char> right, Function function) {
    for (std::size_t i = 0; i < left.size(); ++i) {
        const std::size_t begin = i;
        while (i < left.size() && left[i] != right[i])
            ++i;
        if (begin < i)
            function(Stretch{begin, i});
    }
}

/// From the first byte that differs to the last.
Stretch hull(std::span<const char> left, std::span<const char> right) {
    Stretch all;
    forEachDifference(left, right, [&](Stretch range) { all.join(range); });
    return all;
}

/// What went wrong.
struct Failure {
    const char* what = nullptr; ///< null: nothing
    Stretch where{};            ///< the byte at which it failed, or those that are not what they should be
    int error = 0;

    explicit operator bool() const { return what != nullptr; }
};

/// A line within memory that was asked for before anything was written.
class Line {
public:
    Line() { text_.reserve(500); }

    Line& operator<<(std::string_view part) {
        text_ += part;
        return *this;
    }
    Line& operator<<(std::size_t number) {
        return *this << std::string_view(std::to_string(number));
    } // no longer than a short string
    Line& operator<<(Stretch range) {
        if (range.end - range.begin == 1)
            return *this << "offset " << range.begin;
        return *this << "offsets " << range.begin << " to " << range.end - 1;
    }
    Line& operator<<(const Failure& failure) {
        *this << failure.what;
        if (!failure.where.isEmpty())
            *this << " at " << failure.where;
        std::array<char, 128> text;
        if (failure.error != 0)
            *this << ": " << ::strerror_r(failure.error, text.data(), text.size());
        return *this;
    }

    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

/// All memory is taken by the constructor: a lack of it must not end what was begun.
class InPlaceWriter {
public:
    InPlaceWriter(ByteDevice& device, std::span<const char> from, std::span<const char> to)
        : device_(device), from_(from), to_(to), now_(from.size()) {}

    Failure put() {
        Failure failure;
        forEachDifference(from_, to_, [&](Stretch range) {
            if (failure)
                return;
            touched_.join(range);
            failure = write(range, to_);
        });
        if (failure)
            return failure;
        if (const int error = -device_.sync(); error != 0)
            return {.what = "cannot be brought to the medium", .error = error};
        if ((failure = read()))
            return failure;
        if (const Stretch wrong = hull(now_, to_); !wrong.isEmpty())
            return {.what = "did not take the new bytes", .where = wrong};
        return {};
    }

    /// What is not as it was, or may not be.
    Stretch restore() {
        constexpr int attempts = 3;
        for (int attempt = 0;; ++attempt) {
            const bool isSynced = device_.sync() == 0;
            const bool isRead = !read();
            const Stretch wrong = isRead ? hull(now_, from_) : touched_;
            if (isSynced && wrong.isEmpty())
                return {};
            if (attempt == attempts)
                return wrong.isEmpty() ? touched_ : wrong;
            // Each of them, whatever became of the others; it is read back.
            forEachDifference(from_, isRead ? std::span<const char>(now_) : to_, [&](Stretch range) {
                if (isRead || range.begin < touched_.end)
                    static_cast<void>(write(range, from_));
            });
        }
    }

private:
    ByteDevice& device_;
    std::span<const char> from_;
    std::span<const char> to_;
    std::vector<char> now_; // as it was read back
    Stretch touched_;

    /// Goes on until the end; what fails, fails at the offset that was reached.
    template <class Step>
    static Failure all(Stretch range, const char* what, Step step) {
        for (std::size_t at = range.begin; at < range.end;) {
            const std::ptrdiff_t count = step(at, range.end - at);
            if (count == -EINTR)
                continue;
            if (count <= 0)
                return {.what = what, .where = {at, at + 1}, .error = count < 0 ? static_cast<int>(-count) : EIO};
            at += static_cast<std::size_t>(count);
        }
        return {};
    }

    Failure write(Stretch range, std::span<const char> bytes) {
        return all(range, "cannot be written",
                   [&](std::size_t at, std::size_t count) { return device_.writeAt(at, bytes.subspan(at, count)); });
    }

    Failure read() {
        return all({0, now_.size()}, "cannot be read back", [&](std::size_t at, std::size_t count) {
            return device_.readAt(at, std::span(now_).subspan(at, count));
        });
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
    Line line;
    InPlaceWriter writer(device, from, to);
    const Failure failure = writer.put();
    if (!failure)
        return report;
    const Stretch unknown = writer.restore();
    report.unknownBegin = unknown.begin;
    report.unknownEnd = unknown.end;
    line << failure;
    if (report.isUndone())
        line << "; the old bytes were written back";
    else
        line << "; the old bytes could not be written back, " << unknown
             << (unknown.end - unknown.begin == 1 ? " is unknown" : " are unknown");
    report.error = line.take();
    return report;
}

} // namespace Travik
