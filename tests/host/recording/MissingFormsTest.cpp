// SPDX-License-Identifier: MIT
// RecordingForms.cpp is compiled into this program as where no library is found.
#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;
using Quillmere::Host::getRecordingForms;
using Quillmere::Host::openRecording;

std::string refusalOf(const std::string& path) {
    try {
        openRecording(path);
    } catch (const Quillmere::Host::RecordingException& exception) {
        return std::string(exception.what()).substr(path.size());
    }
    return "";
}

TEST(MissingForms, AreNotNamedAmongThoseThatAreBuiltIn) {
    EXPECT_EQ(getRecordingForms(), (std::vector<std::string>{"CSV", "BIDS motion"}));
}

TEST(MissingForms, AFileOfOneIsRefusedByItsForm) {
    const Support::TemporaryFolder folder;
    const std::string builtIn = ", which this build of the program has no reader for; expected one of what "
                                "it was built with: CSV and BIDS motion";
    EXPECT_EQ(refusalOf(folder.write("in.gz", "\x1F\x8B\x08\0\0\0\0\0"s)),
              ": found a file compressed by gzip" + builtIn);
    EXPECT_EQ(refusalOf(folder.write("in.h5", "\x89HDF\r\n\x1A\n")), ": found an HDF5 file" + builtIn);
    EXPECT_EQ(refusalOf(folder.write("in.mat", "MATLAB 7.3 MAT-file, Platform: GLNXA64")),
              ": found a MAT file of version 7.3" + builtIn);
    EXPECT_EQ(refusalOf(folder.write("in.mat", "MATLAB 5.0 MAT-file, Platform: GLNXA64")),
              ": found a MAT file" + builtIn);
    EXPECT_EQ(refusalOf(folder.write("in.wav", "RIFF\x2A\0\0\0WAVEfmt "s)), ": found a WAV file" + builtIn);
    EXPECT_EQ(refusalOf(folder.write("in.csv", "x\n1\n")), "");
}

} // namespace
