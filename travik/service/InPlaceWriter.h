#pragma once

#include <travik/service/Export.h>

#include <cstddef>
#include <span>
#include <string>

/// Bytes changed where they are, for memories that no rename can replace: an EEPROM, a flash partition.
namespace Travik {

/// What bytes are read from and written to by offset. Each function answers a failure with minus the error number.
class TRAVIK_SERVICE_EXPORT ByteDevice {
public:
    ByteDevice() = default;
    ByteDevice(const ByteDevice&) = delete;
    ByteDevice& operator=(const ByteDevice&) = delete;
    virtual ~ByteDevice();

    /// How many bytes were read or written: at least one, and not necessarily all.
    virtual std::ptrdiff_t readAt(std::size_t offset, std::span<char> bytes) = 0;
    virtual std::ptrdiff_t writeAt(std::size_t offset, std::span<const char> bytes) = 0;
    /// Brings to the medium what was written, so that it is the medium that is read afterwards. 0 on success.
    virtual int sync() = 0;
};

/// What came of writing in place.
struct InPlaceReport {
    /// Empty when the device was read back and holds the new bytes. Otherwise why it does not, and whether it holds the
    /// old ones, in one line.
    std::string error;
    /// After a failure, what is not known to be as it was: offsets from `unknownBegin` to just ahead of `unknownEnd`.
    /// None where they are equal: then the device was read back and holds the old bytes.
    std::size_t unknownBegin = 0;
    std::size_t unknownEnd = 0;

    bool succeeded() const { return error.empty(); }
    bool isUndone() const { return unknownBegin == unknownEnd; }
};

/// Turns the bytes of a device, which are `from`, into `to`, of which there must be as many. Only bytes that differ are
/// written, in ascending order; then all are read back and compared. When anything fails, whatever is not as it was is
/// written back, in several attempts, each of which reads all bytes back.
///
/// The device is to be nobody else's meanwhile. Keep the old bytes elsewhere before: a process that is killed, or a
/// lack of power, leaves some bytes new and some old. A lack of memory does not: all there is need of is taken before
/// the first byte is written, or std::bad_alloc is thrown.
TRAVIK_SERVICE_EXPORT InPlaceReport writeInPlace(ByteDevice& device, std::span<const char> from,
                                                 std::span<const char> to);

} // namespace Travik
