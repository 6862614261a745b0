// SPDX-License-Identifier: MIT
#include "tests/cli/BatchFixture.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace Support {

namespace fs = std::filesystem;

BatchFixture::BatchFixture() {
    folder.write("g.yaml", R"yaml(format: 1
blocks:
  - {id: in, type: RecordingSource, properties: {file: none.csv, time: t, pins: {x: [x]}}}
  - {id: crash, type: Crash}
  - {id: gain, type: FilterGain}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in, to: crash}
  - {from: crash, to: gain}
  - {from: gain, to: out.x}
)yaml");
}

void BatchFixture::writeRecording(const std::string& name, const std::string& rows) const {
    fs::create_directories(fs::path(folder.path(name)).parent_path());
    folder.write(name, "t,x\n" + rows);
}

void BatchFixture::writeSlow(int recordings, int rows) const {
    for (int i = 0; i < recordings; ++i) {
        std::string text;
        for (int row = 0; row < rows; ++row)
            text += std::to_string(row) + "," + (row == 0 ? std::to_string(i) : "-1") + "\n";
        writeRecording("study/p" + std::to_string(i % 3) + "/day" + std::to_string(i) + ".csv", text);
    }
}

std::vector<std::string> BatchFixture::words(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), QUILLMERE);
    return arguments;
}

Ended BatchFixture::call(const std::vector<std::string>& arguments) const {
    return runProgram(words(arguments), folder.path(""));
}

std::vector<std::string> BatchFixture::batchWords(const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"batch", "g.yaml",  "--in",     "study/**/*.csv",
                                       "--out", "results", "--plugin", CRASH_PLUGIN};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return words(arguments);
}

Ended BatchFixture::batch(const std::vector<std::string>& more) const {
    return runProgram(batchWords(more), folder.path(""));
}

std::map<std::string, std::string> BatchFixture::results(const std::string& below) const {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.path(below))) {
        const std::string name = entry.path().lexically_relative(folder.path("")).string();
        if (!entry.is_regular_file() || name == below + "/summary.csv") continue;
        std::string text = folder.read(name);
        if (entry.path().filename() == "status.json") {
            nlohmann::ordered_json status = nlohmann::ordered_json::parse(text);
            for (const char* const member : {"began", "ended", "seconds", "peakMemory"})
                status.erase(member);
            if (status["outcome"].is_object()) status["outcome"].erase("seconds");
            text = status.dump();
        }
        files.emplace(name, text);
    }
    return files;
}

std::string BatchFixture::status(const std::string& name, const std::string& member) const {
    const nlohmann::json status = nlohmann::json::parse(folder.read("results/" + name + "/status.json"));
    const nlohmann::json& value = status.at(member);
    return value.is_string() ? value.get<std::string>() : value.dump();
}

} // namespace Support
