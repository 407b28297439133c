#pragma once

#include <string_view>

#include "libvextrace/messageID.h"

namespace vextools {

/// Name of a message type, such as "MSGID_CAN"; empty where it has none.
std::string_view messageName(msgid_t id);

/// Whether a message of this type may be expected in a trace: its id has a name, is in use
/// elsewhere, or is free for types of one's own. MSGID_INVALID is not expected: long runs of FF
/// bytes, such as a blank flash memory holds, would look like messages.
bool isExpected(msgid_t id);

}  // namespace vextools
