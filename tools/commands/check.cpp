#include "tools/commands/commands.h"

namespace vextools {

void addCheck(CLI::App& /*app*/, ExitStatus& /*status*/) {}

}  // namespace vextools
