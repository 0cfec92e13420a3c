#include "MoDiffRecordReader.h"
#include "MoDiffRecordText.h"
#include "MoDiffRecordWriter.h"
#include "MoFileSizeLimit.h"
#include "MoTestTree.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <thread>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

char const kOut[] = "out";
char const kFile[] = "out/run.jsonl";

MoDiffPairResult pairNamed(std::string const& id, MoDiffOutcome outcome = MoDiffOutcome::ePassed) {
    MoDiffPairResult pair;
    pair.id = id;
    pair.format = "html";
    pair.outcome = outcome;
    return pair;
}

/// A pair in which nothing has its default, with bytes that JSON cannot hold.
MoDiffPairResult fullPair() {
    MoDiffPairResult pair;
    pair.id = "html:a\n\"b\"\xff\\x41";
    pair.format = "html";
    pair.subDirectory = "en-us";
    pair.master = std::string("nul\0here", 8);
    pair.actual = "h\xc3\xa4ndler\xc3";
    pair.outcome = MoDiffOutcome::eUnexpectedlyPassed;
    pair.detail = "\x01\x7f\t";
    pair.warnings = {"one", "\xed\xa0\x80"};
    pair.seconds = 0.25;
    pair.bytes = MoDiffBothSides<std::uint64_t>{std::uint64_t{1} << 40, 7};
    pair.hash = {"00ff00ff00ff00ff00ff00ff00ff00ff", ""};
    pair.hidden = MoDiffBothSides<std::uint64_t>{1, 2};
    pair.patterns = {{"Script", {3, 4}}};
    pair.difference = MoDiffDifference{5, 6, {"m", "a"}, {"\xff", "\\"}};
    pair.output = "words";
    pair.resultFile = "out/xlsx/x";
    return pair;
}

MoDiffRecordHeader headerFor(std::size_t pairs) {
    MoDiffRecordHeader header;
    header.version = "1.0.0";
    header.digest = "d1";
    header.selection = R"({"filters":["b"],"all":false})";
    header.pairs = pairs;
    return header;
}

std::vector<std::string> idsIn(MoDiffRecordReader& reader) {
    std::vector<std::string> ids;
    for (MoDiffPairResult pair; reader.next(pair);)
        ids.push_back(pair.id);
    return ids;
}

std::string errorOf(std::function<void()> const& action) {
    try {
        action();
    } catch (std::exception const& error) {
        return error.what();
    }
    return "(none)";
}

TEST(RecordTextTest, EveryByteSequenceComesBack) {
    for (int first = 0; first < 256; ++first)
        for (int const second : std::initializer_list<int>{'\\', 'x', '0', '"', 0x80, 0xbf, 0}) {
            std::string const bytes = {static_cast<char>(first), static_cast<char>(second), 'x', '4', '1'};
            MoDiffPairResult pair = pairNamed(bytes);
            EXPECT_EQ(MoDiffRecord::parse(MoDiffRecord::pairLine(pair)).pair.id, bytes);
        }
}

TEST(RecordTextTest, StandsAsDocumented) {
    EXPECT_EQ(MoDiffRecordText::quoted("a\\\xe9\n\"\xc3\xa9"), "\"a\\\\\\\\\\\\xe9\\n\\\"\xc3\xa9\"");
    for (char const* const wrong : {"\\", "\\n", "\\x4", "\\xg0", "\\xAB"})
        EXPECT_THROW(MoDiffRecordText::bytesOf(wrong), std::invalid_argument) << wrong;
}

TEST(RecordTest, PairsComeBackWhole) {
    MoDiffPairResult const written = fullPair();
    std::string const line = MoDiffRecord::pairLine(written);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    MoDiffPairResult const read = MoDiffRecord::parse(line).pair;
    EXPECT_EQ(MoDiffRecord::pairLine(read), line);
    EXPECT_EQ(read.master, written.master);
    EXPECT_EQ(read.bytes->master, written.bytes->master);
    EXPECT_EQ(read.difference->after.actual, "\\");
    EXPECT_EQ(read.outcome, MoDiffOutcome::eUnexpectedlyPassed);
}

TEST(RecordTest, SchemaTakesItsLinesAndNoOthers) {
    MoTestTree const tree;
    MoDiffRecordEnd stopped;
    stopped.stopped = "SIGINT";
    std::string const right = MoDiffRecord::headerLine(headerFor(2)) + MoDiffRecord::pairLine(pairNamed("a")) +
                              MoDiffRecord::pairLine(fullPair()) + MoDiffRecord::newFilesLine({"\xff"}) +
                              MoDiffRecord::endLine(stopped);
    std::string const validate =
        "/usr/bin/python3 " MODIFF_SOURCE_DIR "/tests/suite/validate_record.py " MODIFF_SOURCE_DIR
        "/docs/record.schema.json out/run.jsonl >words";
    MoTestTree::write(kFile, right);
    EXPECT_EQ(std::system(validate.c_str()), 0) << MoTestTree::read("words");
    for (auto const& [part, wrong] : std::map<std::string, std::string>{{"\"passed\"", "\"green\""},
                                                                        {"\"hash\"", "\"cash\""},
                                                                        {"\\\\xff", "\\\\n"},
                                                                        {"\"schema\":1", "\"schema\":2"},
                                                                        {"\"complete\":false", "\"complete\":0"}}) {
        MoTestTree::write(kFile, std::string(right).replace(right.find(part), part.size(), wrong));
        EXPECT_NE(std::system(validate.c_str()), 0) << wrong;
    }
}

TEST(RecordTest, TellsWhetherItIsComplete) {
    MoTestTree const tree;
    MoDiffRecordEnd end;
    end.complete = true;
    std::string const header = MoDiffRecord::headerLine(headerFor(2));
    std::string const first = MoDiffRecord::pairLine(pairNamed("a"));
    std::string const second = MoDiffRecord::pairLine(pairNamed("b", MoDiffOutcome::eMissing));
    std::string const last = MoDiffRecord::newFilesLine({"n"}) + MoDiffRecord::endLine(end);
    struct Row {
        char const* name;
        std::string text;
        std::size_t pairs;
        bool complete;
    };
    for (Row const& row : {Row{"whole", header + first + second + last, 2, true},
                           Row{"no_last_line", header + first + second, 2, false},
                           Row{"last_line_cut", header + first + second + last.substr(0, last.size() - 1), 2, false},
                           Row{"pair_cut", header + first + second.substr(0, 20), 1, false},
                           Row{"pair_lacking", header + first + last, 1, false}}) {
        MoTestTree::write(kFile, row.text);
        MoDiffRecordReader reader(kOut);
        EXPECT_EQ(idsIn(reader).size(), row.pairs) << row.name;
        EXPECT_EQ(reader.isComplete(), row.complete) << row.name;
        EXPECT_EQ(reader.describeIncomplete().empty(), row.complete) << row.name;
    }
}

TEST(RecordTest, NamesFileAndLineOfWhatIsWrong) {
    MoTestTree const tree;
    std::string const header = MoDiffRecord::headerLine(headerFor(1));
    EXPECT_THAT(errorOf([] { MoDiffRecordReader("nowhere"); }), HasSubstr("nowhere: "));
    struct Row {
        std::string text;
        char const* error;
    };
    for (Row const& row :
         {Row{"", "out/run.jsonl: the record is empty"},
          Row{"{\"modiff\":\"2\",\"schema\":2}\n", "out/run.jsonl:1: schema 2"},
          Row{"{\"id\":1}\n", "out/run.jsonl:1: "}, Row{header + "]\n", "out/run.jsonl:2: "},
          Row{header + "{\"id\":\"a\"}\n", "out/run.jsonl:2: "}, Row{header + header, "run.jsonl:2"}}) {
        MoTestTree::write(kFile, row.text);
        EXPECT_THAT(errorOf([] {
                        MoDiffRecordReader reader(kOut);
                        idsIn(reader);
                    }),
                    HasSubstr(row.error));
    }
}

TEST(RecordWriterTest, ReplacesOnlyRecordsAndOnlyAlone) {
    MoTestTree const tree;
    MoTestTree::write(kFile, MoDiffRecord::headerLine(headerFor(9)) + MoDiffRecord::pairLine(pairNamed("old")));
    {
        MoDiffRecordWriter writer(kOut);
        EXPECT_THAT(errorOf([] { MoDiffRecordWriter second(kOut); }), HasSubstr("another run writes"));
        writer.start(headerFor(1));
        writer.add(MoDiffRecord::pairLine(pairNamed("new")));
    }
    MoDiffRecordReader reader(kOut);
    EXPECT_THAT(idsIn(reader), ElementsAre("new"));
    for (char const* const foreign : {"mine", "{\"modi"}) {
        MoTestTree::write(kFile, foreign);
        EXPECT_THAT(errorOf([] { MoDiffRecordWriter writer(kOut); }), HasSubstr("no record")) << foreign;
        EXPECT_EQ(MoTestTree::read(kFile), foreign);
    }
    std::filesystem::remove(kFile);
    std::filesystem::create_directory(kFile);
    EXPECT_THAT(errorOf([] { MoDiffRecordWriter writer(kOut); }), HasSubstr("no regular file"));
}

TEST(RecordWriterTest, WhatIsWrittenBesideTakesThePlaceWholeOrNotAtAll) {
    for (bool const isFinished : {true, false}) {
        MoTestTree const tree;
        MoTestTree::write(kFile, MoDiffRecord::headerLine(headerFor(9)) + MoDiffRecord::pairLine(pairNamed("old")));
        {
            MoDiffRecordWriter writer(kOut);
            writer.startBeside(headerFor(1));
            writer.add(MoDiffRecord::pairLine(pairNamed("new")));
            writer.flush();
            MoDiffRecordReader meanwhile(kOut);
            EXPECT_THAT(idsIn(meanwhile), ElementsAre("old"));
            if (isFinished)
                writer.finish();
        }
        MoDiffRecordReader reader(kOut);
        EXPECT_THAT(idsIn(reader), ElementsAre(isFinished ? "new" : "old"));
        EXPECT_EQ(1, std::distance(fs::directory_iterator(kOut), fs::directory_iterator()));
    }
}

TEST(RecordWriterTest, WritesNoRecordThatWasReplacedWhileItWaited) {
    MoTestTree const tree;
    std::optional<MoDiffRecordWriter> first(kOut);
    first->startBeside(headerFor(1));
    std::thread waiting([] { MoDiffRecordWriter(kOut).start(headerFor(2)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // until it waits; otherwise nothing is shown
    first->finish();
    first.reset();
    waiting.join();
    EXPECT_EQ(2U, MoDiffRecordReader(kOut).getHeader().pairs);
}

TEST(RecordWriterTest, GoesOnBehindTheLastWholePair) {
    MoTestTree const tree;
    std::string const there = MoDiffRecord::headerLine(headerFor(3)) + MoDiffRecord::pairLine(pairNamed("a"));
    MoDiffRecordEnd stopped;
    stopped.stopped = "SIGINT";
    for (std::string const& rest : {std::string(), std::string("{\"id\":\"b"), MoDiffRecord::endLine(stopped)}) {
        MoTestTree::write(kFile, there + rest);
        std::vector<std::string> taken;
        {
            MoDiffRecordWriter writer(kOut);
            writer.resume(headerFor(3), [&taken](MoDiffPairResult&& pair) { taken.push_back(pair.id); });
            writer.add(MoDiffRecord::pairLine(pairNamed("c")));
        }
        EXPECT_THAT(taken, ElementsAre("a"));
        EXPECT_EQ(MoTestTree::read(kFile), there + MoDiffRecord::pairLine(pairNamed("c")));
    }
}

TEST(RecordWriterTest, RefusesToResumeWhatIsNotItsOwn) {
    MoTestTree const tree;
    MoDiffRecordEnd end;
    end.complete = true;
    std::string const text = MoDiffRecord::headerLine(headerFor(1)) + MoDiffRecord::pairLine(pairNamed("a"));
    struct Row {
        char const* error;
        std::string text;
        std::function<void(MoDiffRecordHeader&)> change;
    };
    for (Row const& row :
         {Row{"complete", text + MoDiffRecord::endLine(end), [](MoDiffRecordHeader&) {}},
          Row{"another plan", text, [](MoDiffRecordHeader& header) { header.digest = "d2"; }},
          Row{"another selection", text, [](MoDiffRecordHeader& header) { header.pairs = 2; }},
          Row{"another selection", text, [](MoDiffRecordHeader& header) { header.selection = "{}"; }},
          Row{"another shard", text, [](MoDiffRecordHeader& header) { header.shardCount = 2; }}}) {
        MoTestTree::write(kFile, row.text);
        MoDiffRecordHeader header = headerFor(1);
        row.change(header);
        EXPECT_THAT(errorOf([&header] { MoDiffRecordWriter(kOut).resume(header, [](MoDiffPairResult&&) {}); }),
                    HasSubstr(row.error));
        EXPECT_EQ(MoTestTree::read(kFile), row.text) << row.error;
    }
}

TEST(RecordWriterTest, FullDiskLeavesWholeLines) {
    MoTestTree const tree;
    MoDiffRecordWriter writer(kOut);
    writer.start(headerFor(1000));
    std::string const header = MoTestTree::read(kFile);
    MoFileSizeLimit const limit(header.size() + 100);
    std::string const line = MoDiffRecord::pairLine(pairNamed(std::string(200, 'x')));
    std::string const error = errorOf([&writer, &line] {
        writer.add(line);
        writer.flush();
    });
    EXPECT_THAT(error, HasSubstr("cannot write out/run.jsonl: "));
    EXPECT_EQ(MoTestTree::read(kFile), header);
}

} // namespace
