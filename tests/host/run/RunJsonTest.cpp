// SPDX-License-Identifier: MIT
#include "host/run/RunJson.h"

#include "tests/host/kit/GraphFixture.h"

#include <string>

namespace {

using namespace Quillmere::Host;

TEST(OutcomeJson, OfARunThatWasRefusedHasAllItsMembersAndNothingInThem) {
    RunOutcome outcome;
    outcome.graph = "calm";
    outcome.hasBegun = false;
    outcome.failure = "no";
    EXPECT_EQ(Json::outcome(outcome), R"({
  "document": "run summary",
  "format": 1,
  "graph": "calm",
  "graphFile": null,
  "state": "refused",
  "interrupted": false,
  "failure": "no",
  "failedBlock": null,
  "complaints": [],
  "rounds": 0,
  "rows": 0,
  "streamTime": 0.0,
  "seconds": 0.0,
  "sources": [],
  "sinks": [],
  "links": [],
  "firstNonFinite": null,
  "conversions": [],
  "changes": [],
  "changesLeftOut": 0,
  "notes": [],
  "doubts": [],
  "warnings": []
})");
    EXPECT_TRUE(Json::outcome(outcome).starts_with("{\n  \"document\": \"run summary\",\n"))
        << "by which a copy without a mark is known";
}

/// A source that has met everything.
RunOutcome::Recording recording() {
    RunOutcome::Recording recording;
    recording.id = "wrist";
    recording.path = "-";
    recording.rows = 9;
    recording.processedRows = 8;
    recording.nonFiniteValues = 7;
    SourceAccount& account = recording.account;
    account.rows = 9;
    account.firstTime = 0.5;
    account.lastTime = 2.5;
    account.medianStep = 0.25;
    account.origin = "2019-08-06 10:25:50";
    account.notes.emplace_back("accel: g from mg");
    account.skippedRows = 1;
    account.mendedRows = 2;
    account.missingCells = 3;
    account.isCutEndDropped = true;
    account.firstFaults.emplace_back("line 3");
    account.backward.count = 1;
    account.backward.first.row = 4;
    account.backward.first.line = 5;
    account.backward.first.before = 1.5;
    account.backward.first.time = 1.0;
    account.isChangedMeanwhile = true;
    account.repairs.duplicates.note({4, 5, 1.5, 1.5});
    account.repairs.rowsFilled = 6;
    account.repairs.gapsLeft = 2;
    account.repairs.earlyRows = 5;
    account.repairs.resampledRate = 64.0;
    account.repairs.resampledRows = 11;
    return recording;
}

TEST(OutcomeJson, TellsWhatASourceHasReadAndHowItWasMended) {
    RunOutcome outcome;
    outcome.recordings.push_back(recording());
    const std::string json = Json::outcome(outcome);
    const std::string wanted = R"(  "sources": [
    {
      "id": "wrist",
      "file": "-",
      "rows": 9,
      "processedRows": 8,
      "firstTime": 0.5,
      "lastTime": 2.5,
      "medianRate": 4.0,
      "origin": "2019-08-06 10:25:50",
      "notes": [
        "accel: g from mg"
      ],
      "repairs": {
        "skippedRows": 1,
        "mendedRows": 2,
        "missingCells": 3,
        "cutEndDropped": true,
        "firstFaults": [
          "line 3"
        ]
      },
      "timeRepairs": {
        "repeated": {
          "count": 1,
          "firstRow": 4,
          "firstLine": 5,
          "before": 1.5,
          "time": 1.5
        },
        "backward": {
          "count": 0
        },
        "behindEnd": {
          "count": 0
        },
        "gaps": {
          "count": 0
        },
        "rowsFilled": 6,
        "gapsLeft": 2,
        "earlyRows": 5,
        "resampledRate": 64.0,
        "resampledRows": 11
      },
      "timesBackward": {
        "count": 1,
        "firstRow": 4,
        "firstLine": 5,
        "before": 1.5,
        "time": 1.0
      },
      "timesEqual": {
        "count": 0
      },
      "timesJumping": {
        "count": 0
      },
      "changedMeanwhile": true,
      "nonFiniteValues": 7
    }
  ],
)";
    EXPECT_NE(json.find(wanted), std::string::npos) << json;
}

TEST(OutcomeJson, TellsWhereAResultIsWholeOrNot) {
    RunOutcome outcome;
    RunOutcome::Result& result = outcome.results.emplace_back();
    result.id = "out";
    result.path = "out.csv";
    result.partialPath = "out.csv.partial";
    result.rows = 2;
    result.account.nonFiniteValues = 1;
    result.account.firstTime = 0.5;
    result.account.firstRow = 2;
    result.account.firstColumn = "x[0]";
    result.silentPins.emplace_back("q: why");
    const std::string wanted = R"(  "sinks": [
    {
      "id": "out",
      "file": "out.csv",
      "where": "out.csv.partial",
      "complete": false,
      "rows": 2,
      "nonFinite": {
        "values": 1,
        "firstTime": 0.5,
        "firstRow": 2,
        "firstColumn": "x[0]"
      },
      "silentPins": [
        "q: why"
      ]
    }
  ],
)";
    EXPECT_NE(Json::outcome(outcome).find(wanted), std::string::npos) << Json::outcome(outcome);
    result.isComplete = true;
    EXPECT_NE(Json::outcome(outcome).find("\"where\": \"out.csv\""), std::string::npos);
    result.path.clear();
    result.partialPath.clear();
    EXPECT_NE(Json::outcome(outcome).find("\"where\": null"), std::string::npos) << "in memory";
}

TEST(OutcomeJson, TellsWhatWasMadeOfHertz) {
    RunOutcome outcome;
    RateConversion& conversion = outcome.conversions.emplace_back();
    conversion.target = "smooth.RelativeCutOffFreq";
    conversion.written = "5 Hz";
    conversion.number = 0.1;
    conversion.rate = "100 samples/s";
    const std::string json = Json::outcome(outcome);
    for (const char* const wanted : {R"("target": "smooth.RelativeCutOffFreq",)", R"("written": "5 Hz",)",
                                     R"("number": 0.1,)", R"("rate": "100 samples/s",)", R"("at": null,)"})
        EXPECT_NE(json.find(wanted), std::string::npos) << json;
}

TEST(OutcomeJson, TellsWhoFailedAndWhatALinkLost) {
    RunOutcome outcome;
    outcome.failure = "block 'hot' at 1 s: found a; expected b";
    outcome.complaints.emplace_back(Place{"x", 0, 0}, "a", "b");
    outcome.failedBlock = RunOutcome::Spot{"hot", "OddFailing", 1.0};
    RunOutcome::Link& link = outcome.links.emplace_back();
    link.to = "out.x";
    link.received = 5;
    link.taken = 3;
    link.lost = 2;
    const std::string json = Json::outcome(outcome);
    for (const char* const wanted : {R"("state": "failed",)", R"(  "failedBlock": {
    "block": "hot",
    "type": "OddFailing",
    "time": 1.0
  },
  "complaints": [
    {
      "severity": "error",
      "file": "x",
)",
                                     R"(  "links": [
    {
      "from": null,
      "to": "out.x",
      "received": 5,
      "taken": 3,
      "lost": 2,
      "file": null,
      "line": null,
      "column": null
    }
  ],
)"})
        EXPECT_NE(json.find(wanted), std::string::npos) << json;
}

class CheckJson : public Support::GraphFixture {
protected:
    std::string jsonOf(const std::string& text) {
        Job job = jobOf(text);
        return withoutFolder(Json::check(job, job.check(RunMode::Unsaid)));
    }
};

const std::string kBlocks =
    "format: 1\nblocks:\n"
    "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n";

TEST_F(CheckJson, OfAGraphThatCanRunSaysSo) {
    EXPECT_EQ(jsonOf(kBlocks + "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                               "connections: [{from: in, to: out.x}]\n"),
              R"({
  "document": "check",
  "format": 1,
  "graph": "g",
  "graphFile": "g.yaml",
  "ready": true,
  "blocks": 2,
  "connections": 1,
  "leftUnread": [],
  "conversions": [],
  "complaints": [],
  "moreComplaints": 0,
  "warnings": [],
  "moreWarnings": 0
})");
}

TEST_F(CheckJson, TellsTheNumbersThatAreMadeOfHertz) {
    folder.write("in.csv", "t,x\n0,1\n0.01,2\n0.02,3\n");
    const std::string json =
        jsonOf("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, "
               "pins: {x: x}}}\n"
               "  - {id: b, type: FilterButterworth, properties: {RelativeCutOffFreq: 5 Hz}}\n"
               "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in, to: b.in}, {from: b.out, to: out.x}]\n");
    for (const char* const wanted : {"\"conversions\": [\n    {\n", "\"target\": \"b.RelativeCutOffFreq\"",
                                     "\"written\": \"5 Hz\"", "\"number\": 0.1", "\"at\": null"})
        EXPECT_NE(json.find(wanted), std::string::npos) << wanted << " in " << json;
}

TEST_F(CheckJson, TellsComplaintsAndWarningsAndCountsThoseThatAreTooMany) {
    std::string text = kBlocks;
    for (int i = 0; i < 53; ++i)
        text += "  - {id: g" + std::to_string(i) + ", type: FilterGian}\n";
    const std::string json = jsonOf(text);
    for (const char* const wanted :
         {"\"ready\": false", "\"line\": 4,\n      \"column\": ", "\"nearest\": \"FilterGain\"",
          "\"moreComplaints\": 3", "\"severity\": \"warning\"", "the graph has no sink"})
        EXPECT_NE(json.find(wanted), std::string::npos) << wanted << " in " << json;
}

TEST_F(CheckJson, WarningsKeepAStrictGraphFromRunning) {
    EXPECT_NE(jsonOf(kBlocks).find("\"ready\": true"), std::string::npos);
    isStrict = true;
    EXPECT_NE(jsonOf(kBlocks).find("\"ready\": false"), std::string::npos);
}

} // namespace
