#include "tools/commands/commands.h"

namespace vextools {

void addRecord(CLI::App& /*app*/, ExitStatus& /*status*/) {}

}  // namespace vextools
