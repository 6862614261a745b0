// SPDX-License-Identifier: MIT
#include "host/graph/GraphPlugins.h"

#include "host/graph/Graph.h"
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/host/kit/Plugins.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

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

TEST(GraphPluginsTest, AGraphMayNameWhatLiesBesideTheOthers) {
    Support::TemporaryFolder folder;
    const auto linesOf = [&](const std::string& plugin, const std::string& type, BlockCatalogue& own) {
        Complaints complaints;
        const std::string file = folder.write("g.yaml", "format: 1\nplugins: [" + plugin +
                                                            "]\nblocks: [{id: own, type: " + type + "}]\n");
        const GraphDescription description = GraphDescription::fromFile(file, complaints);
        loadPlugins(description, own, complaints);
        std::string lines;
        for (const Complaint& complaint : complaints.getSorted())
            lines += complaint.found + "\n";
        return lines;
    };
    HostCatalogue empty;
    EXPECT_EQ(linesOf("VelmarindEveryday", "Norm", empty), "") << "beside the host's library";
    EXPECT_NE(empty.create("Norm", "own"), nullptr);
    const std::vector<std::string> loaded = empty.getPluginPaths();
    EXPECT_EQ(linesOf("VelmarindEveryday", "Norm", empty), "") << "which is loaded";
    EXPECT_EQ(empty.getPluginPaths(), loaded);
    EXPECT_EQ(linesOf("VelmarindEverday", "Norm", empty),
              "no plug-in 'VelmarindEverday', since no libVelmarindEverday.so lies beside the others\n");

    std::filesystem::copy_file(Support::everydayPlugin(), folder.path("libVelmarindEveryday.so"));
    std::filesystem::copy_file(ODD_PLUGIN, folder.path("libOwn.so"));
    HostCatalogue ofOthers;
    EXPECT_EQ(linesOf("./libOwn.so, VelmarindEveryday", "Norm", ofOthers), "") << "beside one that is loaded";
    EXPECT_EQ(ofOthers.getPluginPath("Norm"), folder.path("libVelmarindEveryday.so"));
    EXPECT_NE(linesOf("./VelmarindEveryday", "Norm", ofOthers).find("no plug-in that can be used"),
              std::string::npos)
        << "a path";
}

} // namespace
