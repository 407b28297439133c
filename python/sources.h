#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "libvexstream/ByteSource.h"

namespace vextrace::python {

namespace py = pybind11;

/// Lets Python handle the signals that came while it did not run: without that Ctrl-C waits.
/// \throws py::error_already_set  what a handler raises, such as KeyboardInterrupt
void handleSignals();

/// Where the bytes of a trace come from, of whatever Python has: a name (str, bytes or PathLike),
/// bytes in memory (anything with a buffer, but for bytes, which would be a name: wrap those in
/// memoryview), or an object with a method read.
class Input {
public:
    explicit Input(const py::object& source);

    ByteSource& bytes() { return *source; }

    /// How many bytes there are, where threads may read them side by side.
    std::optional<uint64_t> size() const { return wholeSize; }

    /// The same bytes once more from the beginning on, for one thread, as long as the input lives.
    /// Only where size() says how many.
    std::unique_ptr<ByteSource> again() const { return openAgain(); }

    /// Whether reading calls Python, and so wants the interpreter's lock.
    bool callsPython() const { return python; }

private:
    void open(const py::object& name);

    std::unique_ptr<ByteSource> source;
    std::function<std::unique_ptr<ByteSource>()> openAgain;
    std::optional<uint64_t> wholeSize;
    bool python = false;
};

/// Releases the interpreter's lock while it lives, where that is allowed.
class Unlocked {
public:
    explicit Unlocked(bool allowed) {
        if (allowed) {
            release.emplace();
        }
    }

private:
    std::optional<py::gil_scoped_release> release;
};

/// Marks an object as in use by a thread; a second one that comes meanwhile is refused.
class Use {
public:
    explicit Use(bool& isInUse) : flag(isInUse) {
        if (flag) {
            throw py::value_error("another thread is using this object");
        }
        flag = true;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { flag = false; }

private:
    bool& flag;
};

}  // namespace vextrace::python
