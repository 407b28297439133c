#pragma once

#include <string>
#include <vector>

#include "tools/report/Drive.h"

namespace vextrace::tools {

/// The moments as the page's script reads them: JSON, an array per value, drive behind drive, safe
/// to stand in the page.
///
/// \param names   of the drives, as they are shown
/// \param fixes   how many each of them has, drawn or not
/// \param groups  their neighbourhoods()
/// \param longestLine  bytes of a trace line
std::string pageData(const std::vector<DrawnDrive>& drives, const std::vector<std::string>& names,
                     const std::vector<uint64_t>& fixes, const std::vector<size_t>& groups,
                     size_t longestLine = Moment::LONGEST_LINE);

}  // namespace vextrace::tools
