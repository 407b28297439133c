#include "tools/commands/commands.h"

namespace vextools {

void addShow(CLI::App& /*app*/, ExitStatus& /*status*/) {}

}  // namespace vextools
