#pragma once

#include <fmt/core.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vextrace::tools {

/// "1 message", "2 messages".
inline std::string counted(uint64_t count, std::string_view thing) {
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

}  // namespace vextrace::tools
