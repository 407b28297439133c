#pragma once

#include <pybind11/numpy.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace vextrace::python {

namespace py = pybind11;

/// Numbers that grow at their end and become a numpy array without a copy. The memory grows by
/// realloc, which moves the pages of large blocks and copies nothing, so that a table of gigabytes
/// is never there twice.
template <class T>
class GrowingArray {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    void push(T value) {
        if (count == capacity) {
            grow();
        }
        data.get()[count++] = value;
    }

    size_t size() const { return count; }

    void append(const GrowingArray& more) {
        while (capacity - count < more.count) {
            grow();
        }
        std::copy_n(more.data.get(), more.count, data.get() + count);
        count += more.count;
    }

    /// Adds to each value from one on.
    void add(T value, size_t first) {
        std::for_each(data.get() + first, data.get() + count, [&](T& each) { each += value; });
    }

    /// The values as an array that owns them; none are left here.
    py::array take(const char* dtype) {
        if (data == nullptr) {
            grow();
        }
        const size_t length = std::exchange(count, 0);
        capacity = 0;
        T* const values = data.get();
        const py::capsule owner(values, [](void* memory) { std::free(memory); });
        static_cast<void>(data.release());
        return py::array(py::dtype(dtype), {length}, {sizeof(T)}, values, owner);
    }

private:
    void grow() {
        const size_t larger = std::max<size_t>(4096, capacity + capacity / 2);
        void* const memory = std::realloc(data.get(), larger * sizeof(T));
        if (memory == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(data.release());
        data.reset(static_cast<T*>(memory));
        capacity = larger;
    }

    struct Free {
        void operator()(T* memory) const { std::free(memory); }
    };

    std::unique_ptr<T, Free> data;
    size_t count = 0;
    size_t capacity = 0;
};

}  // namespace vextrace::python
