// SPDX-License-Identifier: MIT
// Recordings in and out against a bare `from_chars` loop and a bare `to_chars` loop over the same bytes, all
// of them through files in the page cache. An iteration is the whole table.
#include "benchmarks/support/Pair.h"
#include "benchmarks/support/Table.h"

#include "host/inspection/Inspection.h"
#include "host/recording/CsvReader.h"
#include "host/recording/CsvWriter.h"
#include "host/recording/RecordingForms.h"
#include "host/ends/TimeStampWatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <numeric>
#include <string>
#include <vector>

namespace {

using Bench::kColumns;
using Bench::kRows;
using Bench::Table;
using Quillmere::Host::CsvReader;
using Quillmere::Host::CsvWriter;
using Quillmere::Host::ResultFile;

/// Numbers as recordings have them, and numbers with all their digits as results have them.
const Table& shortTable() {
    static const Table table(4);
    return table;
}
const Table& longTable() {
    static const Table table(0);
    return table;
}

void bareRead(benchmark::State& state, const Table& table) {
    std::vector<double> row(kColumns);
    std::string bytes(table.text.size(), '\0');
    for (auto _ : state) {
        // The bytes come from the file here too, so that both sides pay for the kernel's copy.
        const int file = ::open(table.path().c_str(), O_RDONLY);
        if (::read(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            state.SkipWithError("the table cannot be read");
        ::close(file);
        const char* at = bytes.data() + table.body;
        const char* const end = bytes.data() + bytes.size();
        double sum = 0;
        while (at != end) {
            for (double& value : row)
                at = std::from_chars(at, end, value).ptr + 1;
            sum += std::accumulate(row.begin(), row.end(), 0.0);
        }
        benchmark::DoNotOptimize(sum);
    }
}

void read(benchmark::State& state, const Table& table) {
    std::vector<double> row(kColumns);
    std::vector<std::size_t> chosen(kColumns);
    std::iota(chosen.begin(), chosen.end(), std::size_t{0});
    for (auto _ : state) {
        CsvReader reader(table.path());
        reader.select(chosen);
        double sum = 0;
        while (reader.readRow(row.data()))
            sum += std::accumulate(row.begin(), row.end(), 0.0);
        benchmark::DoNotOptimize(sum);
    }
}

/// All that is told of a recording, from the same bytes.
void look(benchmark::State& state, const Table& table) {
    Quillmere::Host::InspectionSettings settings;
    Quillmere::Host::Complaints complaints;
    settings.finish(complaints);
    for (auto _ : state) {
        const auto reader = Quillmere::Host::openRecording(table.path(), settings.wishes);
        const Quillmere::Host::Inspection found = Quillmere::Host::inspect(*reader, settings);
        if (found.rows != kRows) state.SkipWithError("the table was not read whole");
    }
}

/// What looking at time stamps adds to a table of `kRows`.
void watch(benchmark::State& state) {
    Quillmere::Host::TimeStampWatch watch;
    for (auto _ : state)
        for (std::size_t row = 0; row < kRows; ++row)
            watch.take(shortTable().values[row * kColumns], row + 1, row + 2);
    Quillmere::Host::SourceAccount account;
    watch.tell(account);
    if (account.jumps.count > 0) state.SkipWithError("a steady table has no jumps");
}

void bareWrite(benchmark::State& state, const Table& table) {
    std::vector<char> bytes(kRows * kColumns * 26);
    const int file = ::open("/dev/null", O_WRONLY);
    for (auto _ : state) {
        char* at = bytes.data();
        char* const end = at + bytes.size();
        for (std::size_t row = 0; row < kRows; ++row) {
            for (std::size_t i = 0; i < kColumns; ++i) {
                at = std::to_chars(at, end, table.values[row * kColumns + i]).ptr;
                *at++ = ',';
            }
            at[-1] = '\n';
        }
        if (::write(file, bytes.data(), static_cast<std::size_t>(at - bytes.data())) < 0)
            state.SkipWithError("the table cannot be written");
    }
    ::close(file);
}

void write(benchmark::State& state, const Table& table) {
    for (auto _ : state) {
        ResultFile file("/dev/null");
        CsvWriter writer(file);
        table.write(writer);
        writer.flush();
    }
}

const Bench::Suite suite([] {
    Bench::enter({.name = "read/short",
                  .bare = [](benchmark::State& state) { bareRead(state, shortTable()); },
                  .ours = [](benchmark::State& state) { read(state, shortTable()); },
                  .goal = 1.0});
    Bench::enter({.name = "read/long",
                  .bare = [](benchmark::State& state) { bareRead(state, longTable()); },
                  .ours = [](benchmark::State& state) { read(state, longTable()); },
                  .goal = 1.0});
    Bench::note("read/times", watch);
    // Against reading the table, not against the bare loop.
    Bench::enter({.name = "inspect",
                  .bare = [](benchmark::State& state) { read(state, shortTable()); },
                  .ours = [](benchmark::State& state) { look(state, shortTable()); },
                  .goal = 1.2});
    Bench::enter({.name = "write/short",
                  .bare = [](benchmark::State& state) { bareWrite(state, shortTable()); },
                  .ours = [](benchmark::State& state) { write(state, shortTable()); },
                  .goal = 0.55});
    Bench::enter({.name = "write/long",
                  .bare = [](benchmark::State& state) { bareWrite(state, longTable()); },
                  .ours = [](benchmark::State& state) { write(state, longTable()); },
                  .goal = 0.7});
});

} // namespace
