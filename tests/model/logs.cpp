#include "tests/model/logs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>

namespace {

std::string codeOf(std::string sentence) {
    if (sentence.size() > 2 && sentence.compare(0, 2, "$G") == 0) {
        sentence[2] = 'P';
    }
    return sentence.substr(0, 6);
}

}  // namespace

std::vector<std::string> linesOfLog(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream log(path, std::ios_base::binary);
    for (std::string line; std::getline(log, line);) {
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::vector<std::string> logsIn(const std::string& folder) {
    std::vector<std::string> logs;
    std::error_code unreadable;
    for (const auto& entry : std::filesystem::directory_iterator(folder, unreadable)) {
        if (entry.path().extension() == ".nmea") {
            logs.push_back(entry.path().string());
        }
    }
    std::sort(logs.begin(), logs.end());
    return logs;
}

std::vector<std::vector<std::string>> groupedByCode(const std::vector<std::string>& sentences) {
    std::vector<std::vector<std::string>> groups;
    std::set<std::string> held;
    for (const std::string& sentence : sentences) {
        if (groups.empty() || !held.insert(codeOf(sentence)).second) {
            groups.emplace_back();
            held = {codeOf(sentence)};
        }
        groups.back().push_back(sentence);
    }
    return groups;
}
