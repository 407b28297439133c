#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace vextrace::tools {

/// Text that grows at its end, for documents of very many short pieces: a literal is appended by a
/// few instructions, where std::string calls a function.
class TextBuffer {
public:
    TextBuffer& operator+=(std::string_view piece) {
        end = std::copy(piece.begin(), piece.end(), room(piece.size()));
        return *this;
    }

    TextBuffer& operator+=(char character) {
        *room(1) = character;
        ++end;
        return *this;
    }

    /// Room for \p count characters behind the text, to be written to; then endAt() is to be
    /// called.
    char* room(size_t count) {
        if (static_cast<size_t>(limit - end) < count) {
            grow(count);
        }
        return end;
    }

    /// \param newEnd  behind the last character of the text, within the room that room() gave
    void endAt(char* newEnd) { end = newEnd; }

    std::string_view view() const { return {storage.get(), size()}; }
    size_t size() const { return static_cast<size_t>(end - storage.get()); }

    /// Leaves the first \p length characters, and keeps the memory.
    void truncate(size_t length) { end = storage.get() + length; }
    void clear() { truncate(0); }

private:
    void grow(size_t count) {
        const size_t used = size();
        const size_t capacity = std::max(2 * used, used + count);
        std::unique_ptr<char[]> larger(new char[capacity]);
        std::copy(storage.get(), end, larger.get());
        storage = std::move(larger);
        end = storage.get() + used;
        limit = storage.get() + capacity;
    }

    std::unique_ptr<char[]> storage;
    char* end = nullptr;
    char* limit = nullptr;
};

}  // namespace vextrace::tools
