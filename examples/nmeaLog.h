/// \file
/// NMEA logs: what a receiver sent, line by line, as terminal programs record it.
#pragma once

#include <cstddef>
#include <string>

#include "inputFile.h"

/// Reads the sentences of a log one after the other. Skipped are lines that begin with neither "$"
/// nor "!", and lines that a trace file would not give back as they were: those with a NUL byte,
/// those too long for a message's size field, and a bare "$G", which is stored without line feed.
class NmeaLog {
public:
    /// \param path  the log, "-" for standard input
    /// \throws UsageError when it cannot be read
    explicit NmeaLog(const std::string& path);

    /// Reads the next sentence, without its line feed but with its carriage return. The last line
    /// of the log need not end in a line feed.
    /// \return false, with \p sentence unspecified, at the end of the log
    /// \throws UsageError when the log cannot be read on
    bool next(std::string& sentence);

    size_t linesRead() const { return lines; }
    size_t linesSkipped() const { return skipped; }

private:
    InputFile file;
    size_t lines = 0;
    size_t skipped = 0;
};
