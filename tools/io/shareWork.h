#pragma once

#include <cstddef>
#include <functional>

namespace vextrace::tools {

/// Does pieces of work side by side, each in a process of its own: what a command keeps for itself
/// alone, such as its handlers of signals, stays so. Lines that they write to standard error come
/// out whole.
///
/// A signal that ends programs ends the processes first, and then this one.
///
/// \param pieces  how many
/// \param jobs    at most so many at a time; 0 is as many as there are processors
/// \param work    gives the exit status of a piece, counted from 0; throws nothing
/// \param done    is told each piece that is done and its status, in this process; -1 where the
///                process did not end by itself
void shareWork(size_t pieces, unsigned jobs, const std::function<int(size_t)>& work,
               const std::function<void(size_t, int)>& done);

}  // namespace vextrace::tools
