#include "tools/commands/commands.h"

namespace vextools {

void addRepair(CLI::App& /*app*/, ExitStatus& /*status*/) {}

}  // namespace vextools
