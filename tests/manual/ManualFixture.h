// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/BlockPage.h"
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Support {

/// All our plug-ins, with the pages of their blocks, and a folder to try these in.
class ManualFixture : public testing::Test {
protected:
    ManualFixture();

    /// The page of a type. One that is missing, or wrong, fails the test.
    Quillmere::Host::BlockPage pageOf(const std::string& type) const;

    std::vector<std::string> plugins; ///< Their files.
    Quillmere::Host::HostCatalogue catalogue;
    TemporaryFolder folder;
};

} // namespace Support
