#include "tools/commands/folders.h"

#include <fmt/core.h>

#include <filesystem>
#include <map>
#include <optional>
#include <system_error>

#include "tools/io/FileStatus.h"
#include "tools/io/Progress.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/shareWork.h"
#include "tools/io/standardStreams.h"

namespace vextrace::tools {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> outputsOf(const FolderWork& work) {
    std::vector<std::string> outputs;
    std::map<std::string, std::string> inputOf;
    for (const std::string& input : work.inputs) {
        if (input == "-") {
            throw UsageError("-: standard input has no name that a file in a folder could have");
        }
        const fs::path name = fs::path(input).filename().replace_extension(work.ending);
        outputs.push_back((fs::path(work.folder) / name).string());
        const auto [other, isNew] = inputOf.try_emplace(outputs.back(), input);
        if (!isNew) {
            throw UsageError(fmt::format("{}: would become {}, as {} does", shownName(input),
                                         shownName(outputs.back()), shownName(other->second)));
        }
    }
    return outputs;
}

bool exists(const std::string& folder) {
    const std::optional<FileStatus> status = fileStatus(folder);
    return status && status->kind == FileStatus::Kind::FOLDER;
}

void makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!exists(path)) {
        throw UsageError(fmt::format("{}: cannot be made: {}", shownName(path), error.message()));
    }
}

uint64_t sizeOf(const std::string& path) {
    const std::optional<FileStatus> status = fileStatus(path);
    return status ? status->size : 0;
}

}  // namespace

bool isFolder(const std::string& output) {
    return output.ends_with('/') || (output != "-" && exists(output));
}

int fillFolder(const FolderWork& work) {
    const std::vector<std::string> outputs = outputsOf(work);
    makeFolder(work.folder);
    Progress progress(totalSize(statusesThatExist(work.inputs)));
    uint64_t bytesDone = 0;
    int status = STATUS_OK;
    shareWork(
        outputs.size(), work.jobs,
        [&](size_t i) { return outcomeOf([&] { return work.run(work.inputs[i], outputs[i]); }); },
        [&](size_t i, int outcome) {
            if (outcome != STATUS_OK) {
                status = STATUS_DATA;
            }
            if (outcome < 0) {
                tell(fmt::format("{}: its process did not end by itself",
                                 shownName(work.inputs[i])));
            }
            bytesDone += sizeOf(work.inputs[i]);
            progress.update(bytesDone);
        });
    return status;
}

}  // namespace vextrace::tools
