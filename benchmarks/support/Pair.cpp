// SPDX-License-Identifier: MIT
#include "benchmarks/support/Pair.h"

#include "tests/support/KernelChoice.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string_view>
#include <vector>

namespace Bench {

namespace {

constexpr const char* kBareSuffix = "/bare";
constexpr const char* kOursSuffix = "/ours";

struct Row {
    std::string name;
    bool paired;
    double goal;
};

std::vector<Row>& rows() {
    static std::vector<Row> all;
    return all;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) return *middle;
    return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

/// Keeps every repetition's time, and passes everything on where Google Benchmark's own report is wanted.
class Recorder : public benchmark::BenchmarkReporter {
public:
    explicit Recorder(benchmark::BenchmarkReporter* wrapped) : inner(wrapped) {}

    bool ReportContext(const Context& context) override {
        return inner == nullptr || inner->ReportContext(context);
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            failed = failed || run.error_occurred;
            if (run.error_occurred) std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const bool isOfProcessor = run.run_name.time_type.empty();
            const double time = isOfProcessor ? run.cpu_accumulated_time : run.real_accumulated_time;
            const double perIteration = time * 1e9 / static_cast<double>(run.iterations);
            nanoseconds[run.run_name.function_name].push_back(perIteration);
        }
        if (inner != nullptr) inner->ReportRuns(runs);
    }

    void Finalize() override {
        if (inner != nullptr) inner->Finalize();
    }

    bool getIsFailed() const { return failed; }

    /// The median of one body in nanoseconds, or a negative number if a filter left it out.
    double medianOf(const std::string& name) const {
        const auto found = nanoseconds.find(name);
        return found == nanoseconds.end() ? -1.0 : median(found->second);
    }

private:
    benchmark::BenchmarkReporter* inner;
    std::map<std::string, std::vector<double>> nanoseconds;
    bool failed = false;
};

std::string fixed(double value, int digits) {
    if (value < 0.0) return "-";
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

/// Prints the closing table and returns the number of goals missed.
int printTable(const Recorder& recorder, std::ostream& out) {
    std::size_t width = 4;
    for (const Row& row : rows())
        width = std::max(width, row.name.size());
    const auto line = [&](const std::string& name, const std::string& bare, const std::string& ours,
                          const std::string& ratio, const std::string& goal, const std::string& verdict) {
        out << std::left << std::setw(static_cast<int>(width)) << name << std::right << std::setw(13) << bare
            << std::setw(13) << ours << std::setw(8) << ratio << std::setw(8) << goal << verdict << '\n';
    };
    int missed = 0;
    line("name", "bare ns", "ours ns", "ratio", "goal", "");
    for (const Row& row : rows()) {
        const double bare = row.paired ? recorder.medianOf(row.name + kBareSuffix) : -1.0;
        const double ours = recorder.medianOf(row.paired ? row.name + kOursSuffix : row.name);
        if (ours < 0.0) continue;
        const double ratio = bare > 0.0 ? ours / bare : -1.0;
        const bool judged = row.goal > 0.0 && ratio >= 0.0;
        const bool isMissed = judged && ratio > row.goal;
        if (isMissed) ++missed;
        line(row.name, fixed(bare, 2), fixed(ours, 2), fixed(ratio, 2),
             row.goal > 0.0 ? fixed(row.goal, 2) : "-",
             !judged    ? ""
             : isMissed ? "  MISSED"
                        : "  ok");
    }
    return missed;
}

} // namespace

void enter(Pair pair) {
    auto* const bare = benchmark::RegisterBenchmark((pair.name + kBareSuffix).c_str(), std::move(pair.bare));
    auto* const ours = benchmark::RegisterBenchmark((pair.name + kOursSuffix).c_str(), std::move(pair.ours));
    for (auto* const body : {bare, ours}) {
        if (pair.time == Time::OfBody) body->UseManualTime();
        if (pair.time == Time::OfWall) body->UseRealTime();
    }
    rows().push_back({std::move(pair.name), true, pair.goal});
}

void note(std::string name, Body ours) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(ours));
    rows().push_back({std::move(name), false, 0.0});
}

namespace {

int run(int argc, char** argv) {
    Support::pickKernels();
    bool quick = false;
    bool enforce = false;
    bool ownReport = false;
    std::vector<std::string> given;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        quick = quick || argument == "--quick";
        enforce = enforce || argument == "--enforce";
        ownReport = ownReport || argument.starts_with("--benchmark_format=");
        if (argument != "--quick" && argument != "--enforce") given.emplace_back(argument);
    }
    // Ours first: what the user gives stands later on the line and wins.
    std::vector<std::string> line{argv[0], "--benchmark_enable_random_interleaving=true"};
    line.emplace_back(quick ? "--benchmark_repetitions=1" : "--benchmark_repetitions=15");
    line.emplace_back(quick ? "--benchmark_min_time=0.0001" : "--benchmark_min_time=0.01");
    line.insert(line.end(), given.begin(), given.end());
    std::vector<char*> arguments;
    for (std::string& text : line)
        arguments.push_back(text.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

    const std::unique_ptr<benchmark::BenchmarkReporter> report(
        ownReport ? benchmark::CreateDefaultDisplayReporter() : nullptr);
    Recorder recorder(report.get());
    if (benchmark::RunSpecifiedBenchmarks(&recorder) == 0) return 2;
    const int missed = printTable(recorder, ownReport ? std::cerr : std::cout);
    return recorder.getIsFailed() || (enforce && missed > 0) ? 1 : 0;
}

} // namespace
} // namespace Bench

int main(int argc, char** argv) {
    return Bench::run(argc, argv);
}
