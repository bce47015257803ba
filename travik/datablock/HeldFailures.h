#pragma once

#include <exception>
#include <ios>

namespace Travik {

/// Keeps a stream from throwing while a text is written or read: what fails meanwhile is kept in the stream's state. At
/// the end of its life the stream's exception mask is as before, and the stream throws, once, what the mask asks for;
/// nothing while another exception is under way.
class HeldFailures {
public:
    explicit HeldFailures(std::ios& stream)
        : stream_(stream), mask_(stream.exceptions()), uncaught_(std::uncaught_exceptions()) {
        stream.exceptions(std::ios_base::goodbit);
    }
    HeldFailures(const HeldFailures&) = delete;
    HeldFailures& operator=(const HeldFailures&) = delete;
    ~HeldFailures() noexcept(false) {
        try {
            stream_.exceptions(mask_);
        } catch (const std::ios_base::failure&) {
            if (std::uncaught_exceptions() == uncaught_)
                throw;
        }
    }

private:
    std::ios& stream_;
    std::ios_base::iostate mask_;
    int uncaught_;
};

} // namespace Travik
