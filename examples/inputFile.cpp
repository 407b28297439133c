#include "inputFile.h"

#include <cerrno>
#include <iostream>
#include <system_error>

#include "commandLine.h"

std::string withReason(const std::string& text) {
    return errno == 0 ? text : text + ": " + std::generic_category().message(errno);
}

InputFile::InputFile(const std::string& path)
    : name(path), stream(path == "-" ? std::cin : static_cast<std::istream&>(file)) {
    errno = 0;
    if (&stream == &file) {
        file.open(path, std::ios::binary);
    }
    stream.peek();  // a directory can be opened, but not read
    checkRead();
    // Not every standard library's stream tells a failed read from the end of the file.
    if (stream.eof() && errno != 0) {
        throw UsageError(withReason(name + ": cannot be read"));
    }
}

void InputFile::checkRead() const {
    if (stream.bad() || (&stream == &file && !file.is_open())) {
        throw UsageError(withReason(name + ": cannot be read"));
    }
}
