// SPDX-License-Identifier: MIT
// A plug-in for the host's tests that brings a source and a sink, written as somebody else would: it links
// the host, and nothing in the host knows it.
#include "framework/Quillmere.h"
#include "host/ends/RecordingException.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "plugin/PluginEntry.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;

/// Counts to `to`, ten times a second, beginning with `from`.
class CountingSource final : public Source {
public:
    static constexpr const char* kTypeName = "CountingSource";

    explicit CountingSource(const std::string& name) : Source(name, true), out("count", this) {}

    const char* getTypeName() const override { return kTypeName; }
    std::string getPurpose() const override { return "Counts."; }
    const std::vector<SettingDescription>& getSettingDescriptions() const override {
        static const std::vector<SettingDescription> settings{
            {"from", "number", "1", "where it begins"},
            {"to", "number", "", "the last number that it sends"}};
        return settings;
    }
    void configure(const GraphDescription::Block& description, const std::string&,
                   Complaints& complaints) override {
        std::optional<double> last;
        for (const GraphDescription::Setting& setting : description.settings)
            if (setting.name == "to")
                last = toNumber(setting.value, complaints);
            else if (setting.name == "from")
                next = toNumber(setting.value, complaints).value_or(1.0);
            else
                refuseSetting(setting, complaints);
        if (!last) complaints.add(description.where, "a CountingSource without 'to'", "the last number");
        to = last.value_or(0.0);
    }
    void open(Complaints&) override {}
    bool prepare() override { return next <= to; }
    double getNextTimeStamp() const override { return next / 10.0; }
    void release() override { isReleased = true; }
    void process() override {
        if (!isReleased) return;
        isReleased = false;
        const double time = getNextTimeStamp();
        resizeSample(out.data.value, 1, 1);
        out.data.value(0) = next++;
        out.send(time);
    }

private:
    OutputPin<MatrixXd> out;
    double next = 1.0;
    double to = 0.0;
    bool isReleased = false;
};

/// Writes the sum of all that came to the file `into` when the run has ended well.
class SummingSink final : public Sink {
public:
    static constexpr const char* kTypeName = "SummingSink";

    explicit SummingSink(const std::string& name) : Sink(name, true), in("terms", this) {}

    const char* getTypeName() const override { return kTypeName; }
    const std::vector<SettingDescription>& getSettingDescriptions() const override {
        static const std::vector<SettingDescription> settings{{"into", "text", "", "where the sum goes"}};
        return settings;
    }
    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override {
        for (const GraphDescription::Setting& setting : description.settings)
            if (setting.name == "into")
                file = std::filesystem::path(folder) / toText(setting.value, complaints).value_or("");
            else
                refuseSetting(setting, complaints);
    }
    void open() override {}
    void process() override {
        if (!in.hasData()) return;
        const double term = in.take()(0);
        if (term > 1e6) throw RecordingException({{}, std::to_string(term), "less"});
        sum += term;
        rows.add(1);
    }
    void complete() override {
        std::ofstream(file) << sum << "\n";
        isComplete = true;
    }
    void abandon() override {}
    void discard() override {}
    std::uint64_t getRows() const override { return rows.get(); }
    bool getIsComplete() const override { return isComplete; }

private:
    InputPin<MatrixXd> in;
    std::filesystem::path file;
    double sum = 0.0;
    Tally rows;
    bool isComplete = false;
};

} // namespace

QUILLMERE_PLUGIN("Ends", "2.1", CountingSource, SummingSink)
