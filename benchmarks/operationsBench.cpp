#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <new>
#include <vector>

#include "benchmarks/Goals.h"
#include "benchmarks/PlainGps.h"
#include "benchmarks/operations.h"

namespace {
thread_local long allocations = 0;
}

void* operator new(size_t size) {
    ++allocations;
    if (void* block = std::malloc(size)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, size_t /*size*/) noexcept {
    std::free(block);
}

namespace {

constexpr size_t COUNT = std::size(OPERATIONS<GPSTraceMessage>);
constexpr int REPETITIONS = 15;
constexpr double SECONDS_PER_REPETITION = 0.05;

template <class Message>
std::string benchmarkName(const Operation<Message>& operation, const char* way) {
    return std::string(operation.name) + way;
}

template <class Message>
void measure(const char* way) {
    static Fix<Message> fix;
    for (const Operation<Message>& operation : OPERATIONS<Message>) {
        const auto loop = [&operation](benchmark::State& state) {
            for (auto _ : state) {
                operation.run(fix);
                benchmark::ClobberMemory();
            }
        };
        benchmark::RegisterBenchmark(benchmarkName(operation, way).c_str(), loop)
            ->Repetitions(REPETITIONS)
            ->MinTime(SECONDS_PER_REPETITION);
    }
}

// The first run may fill what the later ones find, such as the fields of a message.
template <class Message>
long countAllocations(const Operation<Message>& operation) {
    Fix<Message> fix;
    operation.run(fix);
    const long before = allocations;
    operation.run(fix);
    return allocations - before;
}

// Keeps the medians, for the table at the end.
class MedianReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                medians[run.run_name.function_name] = run.GetAdjustedCPUTime();
            }
        }
    }

    [[nodiscard]] double median(const std::string& name) const {
        const auto iter = medians.find(name);
        return iter == medians.end() ? 0 : iter->second;
    }

private:
    std::map<std::string, double> medians;
};

void printTable(const MedianReporter& reporter, Goals& goals) {
    std::printf("%-22s  %7s  %8s  %6s  %6s  %6s  %6s\n", "operation", "ns", "plain ns", "allocs",
                "plain", "ratio", "wanted");
    for (size_t i = 0; i < COUNT; ++i) {
        const auto& operation = OPERATIONS<GPSTraceMessage>[i];
        const auto& plain = OPERATIONS<PlainGps>[i];
        const double ns = reporter.median(benchmarkName(operation, ""));
        const double plainNs = reporter.median(benchmarkName(plain, "/plain"));
        if (ns == 0 || plainNs == 0) {
            continue;  // left out by a filter
        }
        const double ratio = plainNs / ns;
        std::printf("%-22s  %7.1f  %8.1f  %6ld  %6ld  %6.2f  %6.1f%s\n", operation.name, ns,
                    plainNs, countAllocations(operation), countAllocations(plain), ratio,
                    operation.wantedRatio, goals.verdict(ratio, operation.wantedRatio));
    }
}

}  // namespace

// With "--check" as first argument it fails where a ratio is below what is wanted. The other
// arguments are those of Google Benchmark.
int main(int argc, char** argv) {
    Goals goals(argc, argv);
    std::vector<char*> arguments(argv, argv + argc);
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, interleave);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return EXIT_FAILURE;
    }
    measure<GPSTraceMessage>("");
    measure<PlainGps>("/plain");
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printTable(reporter, goals);
    return goals.exitStatus();
}
