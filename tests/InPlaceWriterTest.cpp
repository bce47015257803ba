#include "Support.h"

#include <travik/service/InPlaceWriter.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace InPlaceWriterTest {

using namespace Travik;
using testing::HasSubstr;

enum class Fault {
    None,
    Fails,        // and does nothing
    StopsHalfway, // and says that it failed
    TakesHalf,    // and says so
    TakesNothing, // and says so
    Interrupted,  // by a signal, before it did anything
    Lies          // other bytes are stored or read than those that are there
};

/// A memory of which some calls do what they should not.
class FaultyDevice : public ByteDevice {
public:
    explicit FaultyDevice(std::string content) : bytes(std::move(content)) {}

    struct Plan {
        Fault fault = Fault::None;
        unsigned int first = 0; ///< call from which on
        bool isForEver = false; ///< or this one only
        unsigned int calls = 0; ///< so far
        Fault next() {
            const unsigned int call = calls++;
            return call == first || (isForEver && call > first) ? fault : Fault::None;
        }
    };
    std::string bytes;
    Plan reads;
    Plan writes;
    Plan syncs;
    std::vector<std::pair<std::size_t, std::size_t>> written; ///< begin and end of each call

    std::ptrdiff_t readAt(std::size_t offset, std::span<char> into) override {
        const Fault fault = reads.next();
        const std::size_t count = countOf(fault, into.size());
        std::ranges::copy(bytes.substr(offset, count), into.begin());
        if (fault == Fault::Lies)
            into[count / 2] ^= 0x10;
        return resultOf(fault, count);
    }

    std::ptrdiff_t writeAt(std::size_t offset, std::span<const char> from) override {
        const Fault fault = writes.next();
        const std::size_t count = countOf(fault, from.size());
        written.emplace_back(offset, offset + from.size());
        std::ranges::copy(from.first(count), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
        if (fault == Fault::Lies)
            bytes[offset] ^= 0x10;
        return resultOf(fault, count);
    }

    int sync() override { return syncs.next() == Fault::None ? 0 : -EIO; }

private:
    static std::size_t countOf(Fault fault, std::size_t count) {
        if (fault == Fault::Fails || fault == Fault::TakesNothing || fault == Fault::Interrupted)
            return 0;
        return fault == Fault::StopsHalfway || fault == Fault::TakesHalf ? (count + 1) / 2 : count;
    }
    static std::ptrdiff_t resultOf(Fault fault, std::size_t count) {
        if (fault == Fault::Interrupted)
            return -EINTR;
        return fault == Fault::Fails || fault == Fault::StopsHalfway ? -EIO : static_cast<std::ptrdiff_t>(count);
    }
};

const std::string oldBytes = "the old bytes of a memory, as they were";
const std::string newBytes = "the NEW bytes of a Memory, as they are!";

TEST(InPlaceWriter, WritesWhatDiffersInAscendingOrder) {
    FaultyDevice device(oldBytes);
    EXPECT_EQ(writeInPlace(device, oldBytes, newBytes).error, "");
    EXPECT_EQ(device.bytes, newBytes);
    const std::vector<std::pair<std::size_t, std::size_t>> expected{{4, 7}, {19, 20}, {35, 39}};
    EXPECT_EQ(device.written, expected);
    device.written.clear();
    EXPECT_EQ(writeInPlace(device, newBytes, newBytes).error, "");
    EXPECT_THAT(device.written, testing::IsEmpty());
    EXPECT_THAT(writeInPlace(device, newBytes, "short").error, HasSubstr("39 bytes"));
    EXPECT_EQ(device.bytes, newBytes);
}

TEST(InPlaceWriter, GoesOnAfterASignal) {
    FaultyDevice device(oldBytes);
    device.writes = {.fault = Fault::Interrupted, .first = 1};
    device.reads = {.fault = Fault::Interrupted};
    EXPECT_EQ(writeInPlace(device, oldBytes, newBytes).error, "");
    EXPECT_EQ(device.bytes, newBytes);
    EXPECT_EQ(device.written.size(), 4U) << "three, and the second once more";
}

/// Whatever happens, what is told is true.
void expectTruth(const FaultyDevice& device, const InPlaceReport& report) {
    if (report.succeeded()) {
        EXPECT_EQ(device.bytes, newBytes);
        EXPECT_TRUE(report.isUndone());
        return;
    }
    EXPECT_THAT(report.error,
                HasSubstr(report.isUndone() ? "the old bytes were written back" : "could not be written back, offset"));
    for (std::size_t i = 0; i < oldBytes.size(); ++i) {
        if (i < report.unknownBegin || i >= report.unknownEnd) {
            EXPECT_EQ(device.bytes[i], oldBytes[i]) << i;
        }
    }
}

// Each call of each kind goes wrong in each way, once or from then on, until none is left that could.
TEST(InPlaceWriter, TellsTheTruthWhicheverCallGoesWrong) {
    using Plan = FaultyDevice::Plan FaultyDevice::*;
    struct Kind {
        const char* name;
        Plan plan;
        std::vector<Fault> faults;
    };
    const std::vector<Fault> all{Fault::Fails, Fault::StopsHalfway, Fault::TakesHalf, Fault::TakesNothing, Fault::Lies};
    const Kind kinds[] = {{"write", &FaultyDevice::writes, all},
                          {"read", &FaultyDevice::reads, all},
                          {"sync", &FaultyDevice::syncs, {Fault::Fails}}};
    unsigned int undone = 0;
    unsigned int unknown = 0;
    for (const Kind& kind : kinds) {
        for (const Fault fault : kind.faults) {
            for (const bool isForEver : {false, true}) {
                unsigned int call = 0;
                for (bool wasReached = true; wasReached; ++call) {
                    SCOPED_TRACE(std::string(kind.name) + ' ' + std::to_string(static_cast<int>(fault)) +
                                 (isForEver ? " from call " : " at call ") + std::to_string(call));
                    FaultyDevice device(oldBytes);
                    device.*kind.plan = {.fault = fault, .first = call, .isForEver = isForEver};
                    const InPlaceReport report = writeInPlace(device, oldBytes, newBytes);
                    expectTruth(device, report);
                    wasReached = (device.*kind.plan).calls > call;
                    if (!wasReached || fault == Fault::TakesHalf) {
                        EXPECT_EQ(report.error, "");
                    } else {
                        EXPECT_NE(report.error, "");
                        // What goes wrong once is put right.
                        EXPECT_TRUE(isForEver || report.isUndone()) << report.error;
                    }
                    undone += !report.succeeded() && report.isUndone() ? 1 : 0;
                    unknown += report.isUndone() ? 0 : 1;
                }
                EXPECT_GE(call, fault == Fault::TakesHalf ? 2U : 1U);
            }
        }
    }
    EXPECT_GT(undone, 15U);
    EXPECT_GT(unknown, 5U);
}

// The second of the three ranges is refused, and while the first is put back the device fails for good.
TEST(InPlaceWriter, SaysWhatIsUnknown) {
    FaultyDevice device(oldBytes);
    device.writes = {.fault = Fault::Fails, .first = 1, .isForEver = true};
    InPlaceReport report = writeInPlace(device, oldBytes, newBytes);
    EXPECT_EQ(report.error, "cannot be written at offset 19: Input/output error; the old bytes could not be written "
                            "back, offsets 4 to 6 are unknown");
    EXPECT_EQ(device.bytes.substr(0, 8), "the NEW ");

    for (const auto& [length, which] :
         {std::pair(1U, "offset 4 is unknown"), std::pair(2U, "offsets 4 to 5 are unknown")}) {
        std::string bytes = oldBytes;
        bytes.replace(4, length, length, '#').replace(19, 1, "#");
        FaultyDevice few(oldBytes);
        few.writes = {.fault = Fault::Fails, .first = 1, .isForEver = true};
        EXPECT_THAT(writeInPlace(few, oldBytes, bytes).error, testing::EndsWith(std::string("back, ") + which));
    }

    FaultyDevice blind(oldBytes);
    blind.reads = {.fault = Fault::Fails, .first = 0, .isForEver = true};
    report = writeInPlace(blind, oldBytes, newBytes);
    EXPECT_EQ(report.error, "cannot be read back at offset 0: Input/output error; the old bytes could not be written "
                            "back, offsets 4 to 38 are unknown");
    EXPECT_EQ(blind.bytes, oldBytes) << "written back without being seen";

    FaultyDevice cached(oldBytes); // what is read need not be what is stored
    cached.syncs = {.fault = Fault::Fails, .first = 0, .isForEver = true};
    EXPECT_EQ(writeInPlace(cached, oldBytes, newBytes).error,
              "cannot be brought to the medium: Input/output error; the old bytes could not be written back, offsets 4 "
              "to 38 are unknown");

    FaultyDevice stuck(oldBytes);
    stuck.writes = {.fault = Fault::Lies, .first = 2};
    EXPECT_EQ(writeInPlace(stuck, oldBytes, newBytes).error,
              "did not take the new bytes at offset 35; the old bytes were written back");
}

} // namespace InPlaceWriterTest
