// SPDX-License-Identifier: MIT
#include "cli/RunPicture.h"

#include "cli/SideFile.h"
#include "cli/UsageError.h"
#include "host/ends/StandardStream.h"
#include "host/report/SpectrumFinder.h"
#include "host/picture/PictureFile.h"
#include "host/text/Printable.h"

#include <filesystem>
#include <iostream>
#include <utility>
#include <vector>

namespace Cli {

using namespace Quillmere::Host;

namespace {

ResultOptions optionsOf(bool overwrites) {
    return {.overwrites = overwrites, .looksOwn = getIsPicture, .isOfGraph = false};
}

/// The place that a name leads to, of a file that needn't be there yet.
std::string placeOf(const std::string& path) {
    std::error_code error;
    const auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(path), error);
    return error ? path : place.string();
}

} // namespace

void checkPicture(const std::string& option, const std::string& path, bool overwrites) {
    Complaints complaints;
    pictureFormOf(path, {option}, complaints);
    if (!complaints.isEmpty()) throw UsageError(complaints.getSorted().front());
    checkSideFile(option, path, optionsOf(overwrites));
}

bool writePicture(const std::string& option, const std::string& path, bool overwrites,
                  const Picture& picture) {
    Complaints complaints;
    const auto form = pictureFormOf(path, {option}, complaints);
    return form && writeSideFile(path, optionsOf(overwrites), drawPicture(picture, *form));
}

void keepFromOutput(const std::string& option, const std::string& path, const std::string& file,
                    const std::string& what) {
    std::error_code error; // of what isn't there, whose name may still be the same
    const bool isSame = getIsStandardStream(path) ? getIsStandardStream(file)
                                                  : placeOf(path) == placeOf(file) ||
                                                        std::filesystem::equivalent(path, file, error);
    if (!isSame) return;
    throw UsageError({{option},
                      "the name '" + printable(file, kLongestName) + "', which " + what + " has too",
                      "a name of its own for each output"});
}

void keepFromPicture(const std::string& option, const std::string& path, const Job& job) {
    const auto keep = [&](const std::string& file, const std::string& what) {
        keepFromSideFile(option, path, file, what);
        if (getIsStandardStream(path) && getIsStandardStream(file))
            throw UsageError({{option}, what + " '" + file + "'", "a file of its own"});
    };
    if (!job.getDescription().path.empty()) keep(job.getDescription().path, "the graph");
    for (const std::string& plugin : job.getCatalogue().getPluginPaths())
        keep(plugin, "the plug-in");
    for (const Graph::Node& node : job.getGraph().getNodes()) {
        if (node.file == nullptr) continue;
        if (node.source != nullptr && getIsStandardStream(node.file->getPath())) continue;
        const auto keepFrom = [&](const std::string& file) {
            if (node.source == nullptr)
                keepFromOutput(option, path, file, "the result");
            else
                keep(file, "the recording");
        };
        keepFrom(node.file->getPath());
        for (const FileEnd::File& file : node.file->getFiles())
            keepFrom(file.name);
    }
}

RunPicture::RunPicture(Job& job) : title(job.getDescription().name) {
    if (title.empty()) title = std::filesystem::path(job.getDescription().path).filename().string();
    const Graph& graph = std::as_const(job).getGraph();
    ManualShelf manuals(graph.getCatalogue());
    SpectrumFinder spectra(graph.getNodes(), graph.getSourceRates(), manuals);
    for (const Graph::Node& node : graph.getNodes()) {
        auto* const sink = dynamic_cast<RecordingSink*>(node.block.get());
        if (sink == nullptr) continue;
        ResultCurves& result = results.emplace_back(*sink);
        for (std::size_t pin = 0; pin < sink->getInputPins().size(); ++pin)
            result.setRowRate(pin, spectra.rowRateAt(*sink->getInputPins()[pin]).value_or(0.0));
    }
}

bool RunPicture::write(const std::string& path, bool overwrites, const std::string& origin) const {
    std::vector<CurveTable> tables;
    for (const ResultCurves& result : results)
        tables.emplace_back(result.getTable()).origin = origin;
    const Picture picture = arrange(std::move(tables), {.title = title});
    if (!picture.getTimes()) {
        std::cerr << "quillmere: "
                  << Complaint({}, "no numbers to draw in the results", "some, for --picture").getText()
                  << "\n";
        return false;
    }
    if (const std::string leftOut = picture.getLeftOut(); !leftOut.empty())
        std::cerr << "quillmere: the picture leaves out " << leftOut << " too many\n";
    return writePicture("--picture", path, overwrites, picture);
}

} // namespace Cli
