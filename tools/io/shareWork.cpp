#include "tools/io/shareWork.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tools/io/TerminalLine.h"
#include "tools/io/errors.h"
#include "tools/io/signals.h"
#include "tools/io/standardStreams.h"

namespace vextrace::tools {

namespace {

struct Worker {
    pid_t process;
    int told;  // the end of a pipe from which its standard error comes
    size_t piece;
    std::string line = {};  // that has not ended
};

class Workers {
public:
    Workers(const std::function<int(size_t)>& toDo, const std::function<void(size_t, int)>& toTell)
        : work(toDo), done(toTell), signals(std::in_place) {}

    void run(size_t pieces, size_t jobs);

private:
    void start(size_t piece);
    [[noreturn]] void workAs(size_t piece, int toldTo);
    void wait();
    static bool pass(Worker& worker);
    void end(const Worker& worker);
    void passSignalsOn();

    const std::function<int(size_t)>& work;
    const std::function<void(size_t, int)>& done;
    std::optional<StopSignals> signals;
    int passedOn = 0;
    std::vector<Worker> workers;
};

void Workers::run(size_t pieces, size_t jobs) {
    size_t next = 0;
    while (true) {
        while (next < pieces && workers.size() < jobs && StopSignals::caught() == 0) {
            start(next++);
        }
        if (workers.empty()) {
            break;
        }
        wait();
    }
    const int signal = StopSignals::caught();
    signals.reset();
    if (signal != 0) {
        static_cast<void>(raise(signal));
    }
}

void Workers::start(size_t piece) {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw DataError(std::string("no pipe for a process: ") + std::strerror(errno));
    }
    const pid_t process = fork();
    if (process == 0) {
        workAs(piece, ends[1]);
    }
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        throw DataError(std::string("no process: ") + std::strerror(errno));
    }
    workers.push_back({process, ends[0], piece});
}

void Workers::workAs(size_t piece, int toldTo) {
    signals.reset();
    TerminalLine::forget();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(toldTo, STDERR_FILENO);
    close(toldTo);
    _exit(work(piece));
}

void Workers::wait() {
    std::vector<pollfd> waiting = {{signals->descriptor(), POLLIN, 0}};
    for (const Worker& worker : workers) {
        waiting.push_back({worker.told, POLLIN, 0});
    }
    poll(waiting.data(), waiting.size(), -1);
    passSignalsOn();
    for (size_t i = waiting.size() - 1; i > 0; --i) {
        Worker& worker = workers[i - 1];
        if (waiting[i].revents != 0 && !pass(worker)) {
            end(worker);
            workers.erase(workers.begin() + static_cast<std::ptrdiff_t>(i - 1));
        }
    }
}

// What it tells, line by line; false at the end.
bool Workers::pass(Worker& worker) {
    std::array<char, 4096> bytes = {};
    const ssize_t count = read(worker.told, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) {
        return true;
    }
    if (count > 0) {
        worker.line.append(bytes.data(), static_cast<size_t>(count));
    } else if (!worker.line.empty()) {
        worker.line += '\n';
    }
    const size_t end = worker.line.rfind('\n') + 1;
    if (end != 0) {
        tellLines(worker.line.substr(0, end));
        worker.line.erase(0, end);
    }
    return count > 0;
}

void Workers::end(const Worker& worker) {
    int status = 0;
    while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
    }
    close(worker.told);
    done(worker.piece, WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

void Workers::passSignalsOn() {
    if (passedOn < StopSignals::count()) {
        passedOn = StopSignals::count();
        for (const Worker& worker : workers) {
            kill(worker.process, StopSignals::caught());
        }
    }
}

}  // namespace

void shareWork(size_t pieces, unsigned jobs, const std::function<int(size_t)>& work,
               const std::function<void(size_t, int)>& done) {
    const unsigned most = jobs != 0 ? jobs : std::max(1U, std::thread::hardware_concurrency());
    Workers(work, done).run(pieces, most);
}

}  // namespace vextrace::tools
