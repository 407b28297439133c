#pragma once

#include <string>
#include <vector>

/// The lines of a receiver's log without their line feeds, carriage returns kept; empty lines are
/// left out. Empty when the file cannot be read.
std::vector<std::string> linesOfLog(const std::string& path);

/// Every *.nmea in the folder, sorted; empty when there is no such folder.
std::vector<std::string> logsIn(const std::string& folder);

/// The sentences of one message each: a new message begins where the code of a sentence, with the
/// talkers that begin with G taken as one, is held already.
std::vector<std::vector<std::string>> groupedByCode(const std::vector<std::string>& sentences);
