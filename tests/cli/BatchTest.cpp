// SPDX-License-Identifier: MIT
#include "tests/cli/BatchFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Support::Ended;

class Batch : public Support::BatchFixture {
protected:
    Batch() {
        writeRecording("study/p1/a.csv", "0,1\n1,2\n");
        writeRecording("study/p1/b.csv", "0,3\n1,4\n");
        writeRecording("study/p2/a.csv", "0,5\n1,6\n");
    }
};

TEST_F(Batch, ResultsMirrorTheRecordings) {
    const Ended ended = batch({"--jobs", "2"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_TRUE(ended.out.starts_with("3 recordings: 3 done, 0 failed (in ")) << ended.out;
    EXPECT_EQ(folder.read("results/p1/a/out.csv"), "t,x[0]\n0,1\n1,2\n");
    EXPECT_EQ(folder.read("results/p2/a/out.csv"), "t,x[0]\n0,5\n1,6\n");
    EXPECT_EQ(status("p1/b", "recording"), "study/p1/b.csv");
    const std::string summary = folder.read("results/summary.csv");
    EXPECT_EQ(std::count(summary.begin(), summary.end(), '\n'), 4);
    EXPECT_NE(summary.find("\np1/b,study/p1/b.csv,done,,"), std::string::npos) << summary;
}

TEST_F(Batch, IsTheSameWithAnyNumberOfJobsAndByHand) {
    ASSERT_EQ(batch({"--jobs", "1"}).exitCode, 0);
    const auto one = results();
    std::filesystem::remove_all(folder.path("results"));
    ASSERT_EQ(batch({"--jobs", "3"}).exitCode, 0);
    EXPECT_EQ(results(), one);
    const Ended plan = batch({"--dry-run"});
    EXPECT_EQ(plan.err, "3 recordings to run\n");
    std::filesystem::remove_all(folder.path("results"));
    folder.write("plan.sh", "quillmere() { " QUILLMERE " \"$@\"; }\n" + plan.out);
    EXPECT_EQ(Support::runProgram({"/bin/sh", "plan.sh"}, folder.path("")).exitCode, 0);
    EXPECT_EQ(results(), one) << "each line is a command of its own";
}

TEST_F(Batch, ADryRunTouchesNothing) {
    EXPECT_EQ(
        batch({"--dry-run"}).out,
        "quillmere run g.yaml --input in=study/p1/a.csv --plugin " CRASH_PLUGIN " --folder results/p1/a\n"
        "quillmere run g.yaml --input in=study/p1/b.csv --plugin " CRASH_PLUGIN " --folder results/p1/b\n"
        "quillmere run g.yaml --input in=study/p2/a.csv --plugin " CRASH_PLUGIN " --folder results/p2/a\n");
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(Batch, FailuresAreTheirOwnAndTellHowToRunThemAgain) {
    writeRecording("study/p1/a.csv", "0,1\n1,two\n");
    writeRecording("study/p1/b.csv", "0,1\n1,666\n");
    writeRecording("study/p3/c.csv", "0,7\n");
    const Ended ended = batch({"--jobs", "1"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.out.starts_with("4 recordings: 2 done, 2 failed (in ")) << ended.out;
    EXPECT_NE(ended.err.find("failed: study/p1/a.csv: block 'in' (RecordingSource) at 0 s: study/p1/a.csv:3: "
                             "column 'x': found \"two\"; "),
              std::string::npos)
        << ended.err;
    EXPECT_NE(ended.err.find("failed: study/p1/b.csv: its process was ended by signal 6 (Aborted): nobody "
                             "expects 666\n  again: quillmere run g.yaml --input in=study/p1/b.csv "),
              std::string::npos)
        << ended.err;
    EXPECT_EQ(status("p1/a", "state"), "failed");
    EXPECT_EQ(status("p1/b", "state"), "crashed");
    EXPECT_EQ(status("p3/c", "state"), "done") << "a new worker goes on";
    EXPECT_NE(folder.read("results/summary.csv").find("\np1/b,study/p1/b.csv,crashed,"), std::string::npos);
}

TEST_F(Batch, WithoutRoomForOneTheOthersAreWhole) {
    std::string rows;
    for (int i = 0; i < 20000; ++i)
        rows += std::to_string(i) + ",0.123456\n";
    writeRecording("study/p1/b.csv", rows);
    const Ended ended =
        Support::runProgram({"/bin/sh", "-c",
                             "ulimit -f 64; exec " QUILLMERE
                             " batch g.yaml --in 'study/**/*.csv' --out results --plugin " CRASH_PLUGIN},
                            folder.path(""));
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_NE(ended.err.find("cannot be written: File too large\n  again: "), std::string::npos) << ended.err;
    EXPECT_EQ(status("p1/b", "state"), "failed");
    EXPECT_EQ(status("p1/a", "state"), "done");
    EXPECT_EQ(status("p2/a", "state"), "done");
}

TEST_F(Batch, TwoRecordingsForOneFolderAreRefusedBeforeTheStart) {
    writeRecording("study/p1/a.tsv", "0,1\n");
    const Ended ended = batch({"--in", "study/**/*.tsv"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "results/p1/a: found two recordings for it, 'study/p1/a.csv' and 'study/p1/a.tsv'; "
                         "expected a name of its own for each, without its ending\n");
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(Batch, SoIsAGraphThatCantRun) {
    const Ended ended = batch({"--set", "gain.Gian=2"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_NE(ended.err.find("did you mean Gain?"), std::string::npos) << ended.err;
    EXPECT_EQ(
        batch({"--source", "inn"}).err,
        "quillmere: --source: found the block 'inn'; expected a source that reads a file: in; did you mean "
        "in?\n");
    EXPECT_EQ(
        call({"batch", "g.yaml", "--in", "study/*.txt", "--out", "results", "--plugin", CRASH_PLUGIN}).err,
        "--in: found no file for 'study/*.txt'; expected a file, or a pattern that some have\n");
    EXPECT_EQ(call({"batch", "g.yaml", "--out", "results"}).err,
              "quillmere: found no --in; expected --in 'FOLDER/**/*.csv' or the like\n");
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(Batch, AGraphNeedntNameFilesAndParametersFollowTheRecording) {
    std::string graph = folder.read("g.yaml");
    graph.replace(graph.find("file: none.csv, "), 16, "");
    graph.replace(graph.find(", properties: {file: out.csv}"), 29, "");
    graph.insert(graph.find("blocks:"), "parameters: {gain: }\n");
    graph.insert(graph.find("type: FilterGain") + 16, ", properties: {Gain: \"${gain}\"}");
    folder.write("g.yaml", graph);
    EXPECT_EQ(batch().err,
              "g.yaml:6:53: found the parameter 'gain' without a value; expected one from the graph "
              "or the caller\n");
    const Ended ended = batch({"--param", "gain=2"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("results/p1/b/out.csv"), "t,x[0]\n0,6\n1,8\n");
}

TEST_F(Batch, ResultsAmongTheRecordingsAreNoRecordings) {
    const std::vector<std::string> words{"batch", "g.yaml",     "--in",     "study/**/*.csv",
                                         "--out", "study/made", "--plugin", CRASH_PLUGIN};
    EXPECT_EQ(call(words).exitCode, 0);
    EXPECT_TRUE(call(words).out.starts_with("3 recordings: 3 done")) << "again";
    EXPECT_FALSE(folder.has("study/made/made"));
}

TEST_F(Batch, ASourceOfSeveralIsNamedAndOthersFollowIt) {
    std::string graph = folder.read("g.yaml");
    graph.insert(
        graph.find("connections:"),
        "  - {id: marks, type: RecordingSource, properties: {file: m.csv, time: t, pins: {x: [x]}}}\n");
    folder.write("g.yaml", graph + "  - {from: marks, to: out.mark}\n");
    const Ended unclear = batch();
    EXPECT_EQ(unclear.exitCode, 2);
    EXPECT_EQ(unclear.err,
              "quillmere: g.yaml: found 2 sources that read files, in and marks; expected --source BLOCK "
              "for the one that reads the recording, and --input BLOCK=FILE for others\n");
    for (const char* const name : {"p1/a", "p1/b", "p2/a"})
        folder.write(std::string("study/") + name + ".marks", "t,x\n1,9\n");
    EXPECT_EQ(batch({"--input", "marks={folder}/{stem}.marks"}).exitCode, 0);
    EXPECT_EQ(folder.read("results/p1/b/out.csv"), "t,x[0],mark[0]\n0,3,\n1,4,\n1,,9\n");
    EXPECT_EQ(batch({"--input", "marks={folder}/{stem}.marks", "--source", "in", "--resume"})
                  .out.find("3 recordings: 3 done (3 before), 0 failed"),
              0u);
}

TEST_F(Batch, ATableSetsPropertiesAndIsJoined) {
    folder.write("participants.csv", "participant_id,age,set:gain.Gain\np1,34,2\np9,1,1\n");
    const Ended ended = batch({"--table", "participants.csv", "--statistic", "max"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err, "participants.csv: warning: no row for study/p2/a.csv\n"
                         "participants.csv: warning: no recording for p9\n");
    EXPECT_EQ(folder.read("results/p1/b/out.csv"), "t,x[0]\n0,6\n1,8\n");
    EXPECT_EQ(folder.read("results/p2/a/out.csv"), "t,x[0]\n0,5\n1,6\n");
    const std::string summary = folder.read("results/summary.csv");
    EXPECT_NE(summary.find(",began,age,set:gain.Gain,out.x[0].max\n"), std::string::npos) << summary;
    EXPECT_NE(summary.find("Z,34,2,8\n"), std::string::npos) << summary;
    EXPECT_NE(summary.find("Z,,,6\n"), std::string::npos) << summary;
}

TEST_F(Batch, ThePlanIsAFileThatIsRunInParts) {
    EXPECT_EQ(batch({"--plan", "plan.txt"}).out, "3 recordings in plan.txt\n");
    EXPECT_FALSE(folder.has("results"));
    EXPECT_EQ(call({"batch", "--plan", "plan.txt", "--lines", "2-3"}).exitCode, 0);
    EXPECT_FALSE(folder.has("results/p1/a"));
    EXPECT_EQ(status("p1/b", "state"), "done");
    EXPECT_EQ(call({"batch", "--plan", "plan.txt", "--resume", "--dry-run"}).out,
              "quillmere run g.yaml --input in=study/p1/a.csv --plugin " CRASH_PLUGIN
              " --folder results/p1/a  # it isn't done\n");
    EXPECT_TRUE(call({"batch", "--plan", "plan.txt", "--resume"})
                    .out.starts_with("3 recordings: 3 done (2 before), 0 failed"));
    EXPECT_EQ(call({"batch", "--plan", "plan.txt", "--lines", "3-2"}).exitCode, 2);
}

/// A stand-in for Slurm: the script is run as a task of each number would run it.
TEST_F(Batch, AnArrayOfSlurmRunsThePlan) {
    const Ended script = batch({"--plan", "plan.txt", "--engine", "slurm", "--per-task", "2", "--slurm",
                                "time=00:10:00 mem=1G", "--print"});
    EXPECT_EQ(script.exitCode, 0) << script.err;
    EXPECT_NE(script.out.find("#SBATCH --array=1-2\n#SBATCH --job-name=quillmere\n#SBATCH "
                              "--output=slurm-%A_%a.out\n#SBATCH --time=00:10:00\n"
                              "#SBATCH --mem=1G\n"),
              std::string::npos)
        << script.out;
    EXPECT_EQ(call({"batch", "--plan", "plan.txt", "--engine", "slurm", "--per-task", "2", "--slurm",
                    "time=00:10:00 mem=1G", "--print"})
                  .out,
              script.out)
        << "of a plan that is there, the same";
    EXPECT_FALSE(folder.has("results"));
    folder.write("array.sh", script.out);
    std::filesystem::create_directory(folder.path("bin"));
    std::filesystem::create_symlink(std::filesystem::canonical(QUILLMERE), folder.path("bin/quillmere"));
    const std::string path = "PATH=" + folder.path("bin") + ":$PATH ";
    const auto task = [&](const std::string& number) {
        return Support::runProgram(
            {"/bin/sh", "-c",
             path + "SLURM_ARRAY_TASK_ID=" + number + " SLURM_CPUS_PER_TASK=2 bash array.sh"},
            folder.path(""));
    };
    EXPECT_TRUE(task("2").out.starts_with("1 recording: 1 done, 0 failed"));
    EXPECT_FALSE(folder.has("results/p1/a"));
    EXPECT_TRUE(task("1").out.starts_with("2 recordings: 2 done, 0 failed"));
    EXPECT_TRUE(task("1").out.starts_with("2 recordings: 2 done (2 before)")) << "a job that is requeued";
    EXPECT_EQ(call({"batch", "--collect", "--out", "results"}).exitCode, 0);
    folder.write("plan.txt", "\n\n" + folder.read("plan.txt"));
    EXPECT_NE(call({"batch", "--plan", "plan.txt", "--engine", "slurm", "--per-task", "2", "--print"})
                  .out.find("--array=1-3\n"),
              std::string::npos)
        << "lines that are empty count";
    EXPECT_EQ(batch({"--plan", "plan.txt", "--engine", "slrum", "--print"}).exitCode, 2);
}

/// A stand-in for `sbatch` that takes what it is given, and for one that doesn't.
TEST_F(Batch, AnArrayIsSubmitted) {
    writeRecording("study/a.csv", "0,1\n");
    writeRecording("study/b.csv", "0,1\n");
    std::filesystem::create_directory(folder.path("bin"));
    const auto stand = [&](const std::string& script) {
        folder.write("bin/sbatch", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(folder.path("bin/sbatch"), std::filesystem::perms::all);
    };
    const auto submit = [&](const std::string& more) {
        return Support::runProgram(
            {"/bin/sh", "-c",
             "PATH=" + folder.path("bin") +
                 ":$PATH exec " QUILLMERE
                 " batch g.yaml --in 'study/*.csv' --out results --plugin " CRASH_PLUGIN
                 " --engine slurm --per-task 1 " +
                 more},
            folder.path(""));
    };
    stand("cp \"$1\" taken; echo Submitted batch job 7");
    const Ended all = submit("");
    EXPECT_EQ(all.exitCode, 0) << all.err;
    EXPECT_TRUE(all.out.starts_with("Submitted batch job 7\n2 recordings in results/plan.txt")) << all.out;
    EXPECT_NE(folder.read("taken").find("#SBATCH --array=1-2\n"), std::string::npos);
    EXPECT_NE(folder.read("taken").find("#SBATCH --output=results/slurm-%A_%a.out\n"), std::string::npos);
    ASSERT_EQ(call({"batch", "--plan", "results/plan.txt", "--lines", "2", "--out", "results"}).exitCode, 0);
    EXPECT_EQ(submit("--resume").exitCode, 0);
    EXPECT_NE(folder.read("taken").find("#SBATCH --array=1-1\n"), std::string::npos) << "the rest alone";
    EXPECT_NE(folder.read("results/plan.txt").find("study/a.csv"), std::string::npos);
    ASSERT_EQ(call({"batch", "--plan", "results/plan.txt", "--out", "results"}).exitCode, 0);
    std::filesystem::remove(folder.path("taken"));
    EXPECT_TRUE(submit("--resume").out.starts_with("2 recordings: 2 done (2 before), 0 failed"));
    EXPECT_FALSE(folder.has("taken")) << "nothing is left to do";
    stand("echo 'sbatch: error: Invalid job array specification' >&2; exit 1");
    const Ended refused = submit("");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_NE(
        refused.err.find("quillmere: --engine: found that sbatch hasn't taken 'results/plan.txt.sbatch'"),
        std::string::npos)
        << refused.err;
}

TEST_F(Batch, EnginesTakeTheirOwnOptions) {
    writeRecording("study/a.csv", "0,1\n");
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--engine", "slurm", "--ship"},
                                               {"--engine", "dask", "--print"},
                                               {"--engine", "dask", "--slurm", "mem=1G"},
                                               {"--engine", "dask", "--plan", "plan.txt"},
                                               {"--engine", "dask://nowhere"},
                                               {"--ship"}}) {
        const Ended ended = batch(options);
        EXPECT_EQ(ended.exitCode, 2) << testing::PrintToString(options);
        EXPECT_NE(ended.err.find("; expected "), std::string::npos) << ended.err;
        EXPECT_FALSE(folder.has("results"));
    }
}

TEST_F(Batch, TheSummaryIsMadeAnewToTheByte) {
    ASSERT_EQ(batch({"--statistic", "mean,p95"}).exitCode, 0);
    const std::string summary = folder.read("results/summary.csv");
    std::filesystem::remove(folder.path("results/summary.csv"));
    EXPECT_EQ(call({"batch", "--collect", "--out", "results", "--statistic", "mean,p95"}).exitCode, 0);
    EXPECT_EQ(folder.read("results/summary.csv"), summary);
    EXPECT_EQ(call({"batch", "--collect", "--out", "study"}).err,
              "quillmere: --out: found no status.json below 'study'; expected the results of a batch\n");
    EXPECT_EQ(call({"batch", "--collect", "--out", "results", "--statistic", "meen"}).exitCode, 2);
}

TEST_F(Batch, PicturesGoIntoEachFolder) {
    EXPECT_EQ(batch({"--picture", "curves.svg"}).exitCode, 0);
    EXPECT_TRUE(folder.has("results/p1/b/curves.svg"));
    EXPECT_EQ(batch({"--picture", "../curves.svg"}).exitCode, 2);
}

} // namespace
