#include "python/sources.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <string_view>

#include "libvexstream/DescriptorSource.h"

namespace vextrace::python {

namespace {

// FileNotFoundError and the like.
[[noreturn]] void throwForErrno(const py::object& name) {
    PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, name.ptr());
    throw py::error_already_set();
}

// A file that was opened by its name.
class File : public DescriptorSource {
public:
    File(int descriptor, const py::object& itsName)
        : DescriptorSource(descriptor), fd(descriptor), name(itsName) {}
    ~File() override {
        close(fd);
        const py::gil_scoped_acquire locked;
        name = {};
    }

    // A pipe may wait for ever, but for signals.
    size_t read(uint8_t* dest, size_t room) override {
        ssize_t count = 0;
        while ((count = ::read(fd, dest, room)) < 0) {
            if (errno != EINTR) {
                fail(errno);
            }
            handleSignals();
        }
        return static_cast<size_t>(count);
    }

    // The same at a place of the file's.
    size_t readAt(uint64_t place, uint8_t* dest, size_t room) const {
        ssize_t count = 0;
        do {
            count = pread(fd, dest, room, static_cast<off_t>(place));
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            fail(errno);
        }
        return static_cast<size_t>(count);
    }

    // Bytes of a regular file.
    std::optional<uint64_t> size() const {
        struct stat status = {};
        const bool isRegular = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
        return isRegular ? std::optional<uint64_t>(status.st_size) : std::nullopt;
    }

private:
    [[noreturn]] void fail(int reason) const {
        const py::gil_scoped_acquire locked;
        errno = reason;
        throwForErrno(name);
    }

    int fd;
    py::object name;
};

// The bytes of a file, read apart from whoever else reads it.
class SameFile : public ByteSource {
public:
    explicit SameFile(const File& opened) : file(opened) {}

    size_t read(uint8_t* dest, size_t room) override {
        const size_t count = file.readAt(position, dest, room);
        position += count;
        return count;
    }

    uint64_t skip(uint64_t count) override {
        const uint64_t size = file.size().value_or(0);
        const uint64_t passed = std::min(count, size - std::min(size, position));
        position += passed;
        return passed;
    }

private:
    const File& file;
    uint64_t position = 0;
};

int openForReading(const py::object& name) {
    // The bytes of the name as the system has it: a bytes object holds a NUL behind them.
    PyObject* encoded = nullptr;
    if (PyUnicode_FSConverter(name.ptr(), &encoded) == 0) {
        throw py::error_already_set();
    }
    const auto path = py::reinterpret_steal<py::bytes>(encoded);
    int fd = -1;
    int reason = 0;
    {
        const py::gil_scoped_release unlocked;
        fd = ::open(PyBytes_AS_STRING(path.ptr()), O_RDONLY | O_CLOEXEC | O_NOCTTY);
        reason = errno;
    }
    if (fd < 0) {
        errno = reason;
        throwForErrno(name);
    }
    return fd;
}

// Bytes that a Python object holds; it cannot change its size meanwhile.
class Memory : public ByteSource {
public:
    explicit Memory(const py::buffer& object) {
        if (PyObject_GetBuffer(object.ptr(), &view, PyBUF_SIMPLE) != 0) {
            throw py::error_already_set();
        }
        source.emplace(bytes());
    }
    ~Memory() override {
        const py::gil_scoped_acquire locked;
        PyBuffer_Release(&view);
    }

    size_t read(uint8_t* dest, size_t room) override { return source->read(dest, room); }
    uint64_t skip(uint64_t count) override { return source->skip(count); }

    std::span<const uint8_t> bytes() const {
        return {static_cast<const uint8_t*>(view.buf), static_cast<size_t>(view.len)};
    }

private:
    Py_buffer view = {};
    std::optional<MemorySource> source;
};

// Whatever has a method read.
class FileObject : public ByteSource {
public:
    explicit FileObject(const py::object& file) : object(file) {}
    ~FileObject() override {
        const py::gil_scoped_acquire locked;
        object = {};
    }

    size_t read(uint8_t* dest, size_t room) override {
        const py::gil_scoped_acquire locked;
        const py::object got = object.attr("read")(room);
        if (!PyBytes_Check(got.ptr())) {
            throw py::type_error(
                "read() of the file gives no bytes; it was not opened in binary "
                "mode, or has nothing to read yet");
        }
        const std::string_view bytes(PyBytes_AS_STRING(got.ptr()),
                                     static_cast<size_t>(PyBytes_GET_SIZE(got.ptr())));
        if (bytes.size() > room) {
            throw py::value_error("read() of the file gives more than it was asked for");
        }
        std::copy(bytes.begin(), bytes.end(), dest);
        return bytes.size();
    }

    uint64_t skip(uint64_t count) override {
        const py::gil_scoped_acquire locked;
        if (!py::hasattr(object, "seekable") || !object.attr("seekable")().cast<bool>()) {
            return ByteSource::skip(count);
        }
        object.attr("seek")(count, 1);
        return count;
    }

private:
    py::object object;
};

bool isName(const py::object& object) {
    return py::isinstance<py::str>(object) || py::hasattr(object, "__fspath__");
}

}  // namespace

void handleSignals() {
    const py::gil_scoped_acquire locked;
    if (PyErr_CheckSignals() != 0) {
        throw py::error_already_set();
    }
}

void Input::open(const py::object& name) {
    auto file = std::make_unique<File>(openForReading(name), name);
    wholeSize = file->size();
    openAgain = [&opened = *file] { return std::make_unique<SameFile>(opened); };
    source = std::move(file);
}

Input::Input(const py::object& object) {
    if (isName(object)) {
        open(object);
    } else if (PyObject_CheckBuffer(object.ptr()) != 0) {
        auto memory = std::make_unique<Memory>(py::reinterpret_borrow<py::buffer>(object));
        wholeSize = memory->bytes().size();
        openAgain = [bytes = memory->bytes()] { return std::make_unique<MemorySource>(bytes); };
        source = std::move(memory);
    } else if (py::hasattr(object, "read")) {
        source = std::make_unique<FileObject>(object);
        python = true;
    } else {
        throw py::type_error("a trace is a path, bytes, or an object with a method read");
    }
}

}  // namespace vextrace::python
