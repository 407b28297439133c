#include <filesystem>
#include <fstream>
#include <iostream>

#include "tests/model/GPSModel.h"
#include "tests/model/differential.h"
#include "tests/model/logs.h"

namespace {

void writeFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios_base::binary);
    file << content;
}

// Of another type than GPS, with a payload of so many bytes.
std::string otherMessage(size_t length) {
    std::string message(14 + length, '\x01');
    message[0] = '\0';
    message[1] = static_cast<char>(12 + length);
    message[2] = '\0';
    return message;
}

// A few messages are enough to begin with: the fuzzers vary them.
void makeSeeds(const std::vector<std::vector<std::string>>& groups,
               const std::filesystem::path& folder) {
    constexpr size_t SEEDS = 24;
    std::string walk;
    for (size_t i = 0; i < groups.size() && i < SEEDS; ++i) {
        const std::string name = std::to_string(i);
        const std::string bytes = GPSModel::of(i, groups[i]).write();
        if (i % 8 == 0) {
            walk.clear();
        }
        walk += bytes;
        writeFile(folder / "decode" / name, bytes);
        writeFile(folder / "decode" / ("walk" + name), walk);
        writeFile(folder / "trace" / name, walk);
        writeFile(folder / "trace" / ("mixed" + name),
                  otherMessage(i) + bytes + otherMessage(i + 1));
        writeFile(folder / "framer" / name, "\x07" + walk);
        writeFile(folder / "text" / name, bytes.substr(14));
        writeFile(folder / "text" / ("program" + name), programOf(i, groups[i]));
    }
}

}  // namespace

/// Makes first inputs for the fuzzers from the sentences of a log.
int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: makeSeeds LOG FOLDER\n";
        return 2;
    }
    const auto groups = groupedByCode(linesOfLog(argv[1]));
    if (groups.empty()) {
        std::cerr << "makeSeeds: no sentences in " << argv[1] << '\n';
        return 1;
    }
    makeSeeds(groups, argv[2]);
    return 0;
}
