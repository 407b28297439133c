#pragma once

#include <string_view>

#include "libvexstream/visibility.h"
#include "libvextrace/messageID.h"

namespace vextrace {

/// Name of a message type, such as "MSGID_CAN"; empty where it has none.
VEXSTREAM_EXPORT std::string_view messageName(msgid_t id);

/// Whether a message of this type may be expected in a trace: its id has a name, is in use
/// elsewhere, or is free for types of one's own. MSGID_INVALID is not expected: long runs of FF
/// bytes, such as a blank flash memory holds, would look like messages.
VEXSTREAM_EXPORT bool isExpected(msgid_t id);

}  // namespace vextrace
