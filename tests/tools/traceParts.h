/// \file
/// Traces that are written part by part.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/stream/traces.h"
#include "tests/tools/TemporaryFolder.h"
#include "tools/io/errors.h"
#include "tools/trace/TraceOutput.h"

inline std::string text(const TraceBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Parts of epochs, told apart by stamp and size.
inline vextrace::EpochBuilder::Part part(timeStamp_t stamp, const std::string& payload,
                                         bool beginsEpoch = true) {
    vextrace::EpochBuilder::Part result;
    result.bytes = messageOf(MSGID_GPS, stamp, payload);
    result.messages = 1;
    result.sentences = 2;
    result.stamp = stamp;
    result.beginsEpoch = beginsEpoch;
    return result;
}

inline const vextrace::EpochBuilder::Part FIRST = part(0x0102030405060708, "$GPABC,1\n");
inline const vextrace::EpochBuilder::Part SECOND = part(0x1112131415161718, "$GPABC,2,longer\n");
inline const vextrace::EpochBuilder::Part THIRD =
    part(0x2122232425262728, "$GPABC,3,longest of all\n", false);

inline std::string text(const std::vector<vextrace::EpochBuilder::Part>& parts) {
    std::string result;
    for (const vextrace::EpochBuilder::Part& p : parts) {
        result.append(p.bytes.begin(), p.bytes.end());
    }
    return result;
}

// No file becomes longer than that while this lives.
class SizeLimit {
public:
    explicit SizeLimit(size_t size) {
        static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {size, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;
    ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before = {};
};

class TraceOutputTest : public testing::Test {
protected:
    TraceOutputTest() {
        write("log", "$GPABC\n");
        write("other", "another log\n");
    }

    std::string path(const std::string& name) const { return folder.path(name); }
    void write(const std::string& name, const std::string& content) const {
        folder.write(name, content);
    }
    std::string content(const std::string& name) const { return folder.content(name); }
    bool exists(const std::string& name) const { return folder.exists(name); }

    // Writes the parts, and tells what was told.
    std::string record(const std::string& name, vextrace::tools::ExistingFile existing,
                       const std::vector<vextrace::EpochBuilder::Part>& parts) const {
        const vextrace::tools::InputFile input(path("log"));
        vextrace::tools::TraceOutput output(path(name), existing, input);
        for (const vextrace::EpochBuilder::Part& p : parts) {
            output.write(p);
        }
        output.close();
        return output.notice();
    }

    // What is said of an output that cannot be used, less its folder.
    std::string refusal(const std::string& name, vextrace::tools::ExistingFile existing) const {
        const vextrace::tools::InputFile input(path("log"));
        try {
            const vextrace::tools::TraceOutput output(path(name), existing, input);
        } catch (const vextrace::tools::UsageError& error) {
            return std::string(error.what()).substr(folder.path().size() + 1);
        }
        return "none";
    }

    TemporaryFolder folder;
};
