#include "tools/commands/commands.h"

namespace vextools {

void addExport(CLI::App& /*app*/, ExitStatus& /*status*/) {}

}  // namespace vextools
