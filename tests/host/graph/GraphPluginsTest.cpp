// SPDX-License-Identifier: MIT
#include "host/graph/GraphPlugins.h"

#include "host/graph/Graph.h"
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using namespace Quillmere::Host;

TEST(GraphPluginsTest, AGraphNamesItsPlugins) {
    Support::TemporaryFolder folder;
    const auto built = [&](const std::string& plugins) {
        Complaints complaints;
        HostCatalogue own;
        const std::string file =
            folder.write("sub/g.yaml", "format: 1\n" + plugins + "blocks: [{id: odd, type: OddGenerator}]\n");
        const GraphDescription description = GraphDescription::fromFile(file, complaints);
        loadPlugins(description, own, complaints);
        const Graph graph(description, own, complaints);
        std::string lines;
        for (const Complaint& complaint : complaints.getSorted())
            lines += complaint.getText() + "\n";
        for (std::size_t at = 0; (at = lines.find(folder.path(""))) != std::string::npos;)
            lines.erase(at, folder.path("").size());
        return lines;
    };
    std::filesystem::create_directory(folder.path("sub"));
    std::filesystem::create_symlink(ODD_PLUGIN, folder.path("libOwn.so"));
    EXPECT_EQ(built("plugins: [../libOwn.so]\n"), "");
    EXPECT_EQ(built("plugins: [../libOwn.so, ../libOwn.so]\n"), "") << "once is enough";
    EXPECT_EQ(built("plugins: []\n").find("sub/g.yaml:3:26: found the block type 'OddGenerator'"), 0u);
    EXPECT_EQ(built("plugins: [libOwn.so]\n")
                  .find("sub/g.yaml:2:11: found no plug-in that can be used (sub/libOwn.so: found no such "
                        "file; expected a "
                        "plug-in (No such file or directory)); expected a plug-in's file, its path relative "
                        "to the graph's "
                        "folder\n"),
              0u);
    EXPECT_EQ(built("plugins: libOwn.so\n")
                  .find("sub/g.yaml:2:10: found 'libOwn.so'; expected a list of plug-ins' files"),
              0u);
}

} // namespace
