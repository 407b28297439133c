#include "libvextrace/version.h"

namespace vextrace {

int version() {
    return VEXTRACE_VERSION;
}

}  // namespace vextrace
