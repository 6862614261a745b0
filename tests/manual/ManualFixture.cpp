// SPDX-License-Identifier: MIT
#include "tests/manual/ManualFixture.h"

#include <sstream>

namespace Support {

using namespace Quillmere::Host;

ManualFixture::ManualFixture() {
    std::istringstream paths(OUR_PLUGINS);
    for (std::string path; std::getline(paths, path, ':');)
        plugins.push_back(path);
    for (const std::string& path : plugins)
        catalogue.load(path);
}

BlockPage ManualFixture::pageOf(const std::string& type) const {
    Complaints complaints;
    const auto page = BlockPage::read(type, catalogue, complaints);
    EXPECT_TRUE(page) << type << " has no page";
    for (const Complaint& complaint : complaints.getSorted())
        ADD_FAILURE() << complaint.getText();
    return page.value_or(BlockPage{});
}

} // namespace Support
