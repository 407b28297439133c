/// \file
/// Files to read, or standard input in their place.
#pragma once

#include <fstream>
#include <istream>
#include <string>

/// The text and, behind it, why the system's last call failed, where errno says so. Clear errno
/// before the calls in question.
std::string withReason(const std::string& text);

/// An open file.
class InputFile {
public:
    /// \param path  the file, "-" for standard input
    /// \throws UsageError when it cannot be read
    explicit InputFile(const std::string& path);

    std::istream& bytes() { return stream; }

    /// To be called where bytes() ends.
    /// \throws UsageError when that is not the end of the file, but an error
    void checkRead() const;

private:
    std::string name;
    std::ifstream file;
    std::istream& stream;
};
