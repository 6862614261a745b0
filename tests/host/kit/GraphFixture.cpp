// SPDX-License-Identifier: MIT
#include "tests/host/kit/GraphFixture.h"
#include "tests/host/kit/Plugins.h"

namespace Support {

using namespace Quillmere::Host;

GraphFixture::GraphFixture() {
    catalogue.load(VELMARIND_PLUGIN);
    catalogue.load(everydayPlugin());
    catalogue.load(ODD_PLUGIN);
    folder.write("in.csv", "t,x,y\n0,1,10\n0.5,2,20\n1,3,30\n");
}

std::string GraphFixture::complaintsOf(const std::string& text, const GraphChanges& changes) {
    Complaints complaints;
    const GraphDescription description =
        GraphDescription::fromFile(folder.write("g.yaml", text), complaints).with(changes, complaints);
    Graph graph(description, catalogue, complaints);
    graph.openSources(complaints);
    std::string lines;
    for (const Complaint& complaint : complaints.getSorted())
        lines += withoutFolder(complaint.getText()) + "\n";
    return lines;
}

Job GraphFixture::jobOf(const std::string& text, const GraphChanges& changes, const RunLimit& limit) {
    return Job::fromFile(folder.write("g.yaml", text), catalogue,
                         {.changes = changes, .limit = limit, .isStrict = isStrict});
}

std::string GraphFixture::run(const std::string& text, const GraphChanges& changes, const RunLimit& limit) {
    outcome = jobOf(text, changes, limit).run(stop.get_token());
    return withoutFolder(outcome.failure);
}

std::string GraphFixture::warningsOfRun() const {
    std::string lines;
    for (const Warning& warning : outcome.warnings)
        lines += withoutFolder(warning.getText()) + "\n";
    return lines;
}

std::string GraphFixture::withoutFolder(std::string text) const {
    const std::string prefix = folder.path("");
    for (std::size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix))
        text.erase(at, prefix.size());
    return text;
}

} // namespace Support
