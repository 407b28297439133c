#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vextrace {

/// Of what kind the payloads of GPS messages are. It is kept for some of them by their offsets:
/// many candidates may lead to one message.
class GpsPayloads {
public:
    enum class Kind : uint8_t {
        UNREADABLE,  ///< the library would not decode it whole
        CUT,         ///< without a line feed at the end
        LOOSE,       ///< lines, but not as the library writes them
        LINES,       ///< canonical
        SENTENCES    ///< canonical, and the first line begins as a sentence does
    };

    /// \param offset  of the message in the trace
    Kind kindOf(uint64_t offset, std::span<const uint8_t> payload);

    /// The payload is known to be canonical and need not be looked at for that.
    void noteCanonical(uint64_t offset, std::span<const uint8_t> payload);

    /// What was known of the bytes holds no longer.
    void forget() { known = {}; }

private:
    struct Known {
        uint64_t offset = ~uint64_t{0};
        size_t size = 0;
        Kind kind = Kind::UNREADABLE;
    };

    std::array<Known, 64> known;
};

}  // namespace vextrace
