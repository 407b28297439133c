#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvextrace/GPSTraceMessage.h"

namespace vextrace::tools {

/// A fix that can be pointed at on the page, with what is shown beside it.
class Moment {
public:
    /// A longer trace line is cut: a page has room for thousands of ordinary ones.
    static constexpr size_t LONGEST_LINE = 1500;

    /// \param ofMessage  that the fix is of; kept until settle()
    /// \param ofNumber   of the message in its trace
    /// \param ofTrace    which one, counted from 0
    Moment(Fix ofFix, std::unique_ptr<GPSTraceMessage> ofMessage, uint64_t ofNumber,
           size_t ofTrace);

    /// Keeps what the texts are made of, in as little memory as there may be many moments.
    void settle();

    /// Bytes of memory, once settled.
    size_t footprint() const;

    /// What is shown of the message.
    struct Texts {
        std::string position;   ///< as the RDB text has it, without altitude; empty if not valid
        std::string traceLine;  ///< escaped
    };

    /// Made when they are asked for, because most moments of a long drive are never shown.
    Texts texts() const;

    const Fix fix;
    const uint64_t number;
    const size_t trace;
    double eastward = 0;  ///< its longitude, without a jump at the 180th meridian

private:
    std::unique_ptr<GPSTraceMessage> message;  ///< until settle()
    std::vector<uint8_t> bytes;                ///< then its byte-array form
    Texts ready;                               ///< or, where that is long, its texts
};

using MomentPtr = std::shared_ptr<Moment>;

/// A position in the form of the RDB text: "48°7.038 N, 11°31.000 E".
std::string positionText(double latitude, double longitude);

}  // namespace vextrace::tools
