#pragma once

#include <string>
#include <vector>

#include "tools/report/Series.h"
#include "tools/report/TrackPicture.h"

namespace vextrace::tools {

/// The moments as the page's script reads them: JSON, an array per value, safe to stand in the
/// page.
///
/// \param picture  where the moments are in it; null when there is none
/// \param traces   names of the files, as they are shown
std::string pageData(const std::vector<Series::Drawn>& drawn, const TrackPicture* picture,
                     const std::vector<std::string>& traces);

}  // namespace vextrace::tools
