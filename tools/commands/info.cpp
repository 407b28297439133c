#include "tools/commands/commands.h"

namespace vextools {

void addInfo(CLI::App& /*app*/, ExitStatus& /*status*/) {}

}  // namespace vextools
