#include "MoDiffRecordMerge.h"
#include "MoDiffRecordReader.h"
#include "MoTestTree.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct Shard {
    unsigned index = 1;
    unsigned count = 2;
    std::vector<std::string> ids;
    std::vector<std::string> newFiles;
    MoDiffOutcome outcome = MoDiffOutcome::ePassed;
    std::string digest = "d";
    std::string selection = "{}";
    bool isComplete = true;
};

void write(std::string const& directory, Shard const& shard) {
    MoDiffRecordHeader header;
    header.digest = shard.digest;
    header.selection = shard.selection;
    header.pairs = shard.ids.size();
    header.shardIndex = shard.index;
    header.shardCount = shard.count;
    header.newFails = true;
    std::string text = MoDiffRecord::headerLine(header);
    MoDiffRecordEnd end;
    end.complete = true;
    end.seconds = 2;
    for (std::string const& id : shard.ids) {
        MoDiffPairResult pair;
        pair.id = id;
        pair.outcome = shard.outcome;
        text += MoDiffRecord::pairLine(pair);
        end.totals.add(pair.outcome);
    }
    if (shard.isComplete)
        text += MoDiffRecord::newFilesLine(shard.newFiles) + MoDiffRecord::endLine(end);
    MoTestTree::write(directory + "/run.jsonl", text);
}

MoDiffRecordMerge::Report merge(std::vector<std::string> const& directories, std::string const& out = "joined") {
    MoDiffRunEvents events;
    return MoDiffRecordMerge::merge(directories, out, events);
}

TEST(RecordMergeTest, JoinsWhatBelongsTogether) {
    MoTestTree const tree;
    write("one", {1, 2, {"c", "a"}, {"new", "made later"}});
    write("two", {2, 2, {"b"}, {"new"}, MoDiffOutcome::eMissing});
    MoDiffRecordMerge::Report const report = merge({"two", "one"});
    MoDiffRecordReader reader("joined");
    std::vector<std::string> ids;
    for (MoDiffPairResult pair; reader.next(pair);)
        ids.push_back(pair.id);
    EXPECT_THAT(ids, ElementsAre("a", "b", "c"));
    EXPECT_TRUE(reader.isComplete());
    EXPECT_EQ(reader.getHeader().shardCount, 1U);
    EXPECT_THAT(reader.getNewFiles(), ElementsAre("new"));
    EXPECT_EQ(reader.getEnd().totals, report.totals);
    EXPECT_EQ(report.totals.getCount(MoDiffOutcome::eMissing), 1U);
    EXPECT_EQ(report.exitStatus, 1);
}

TEST(RecordMergeTest, NewFilesAreJudgedOverAll) {
    MoTestTree const tree;
    write("one", {1, 2, {"a"}, {"x"}});
    write("two", {2, 2, {"b"}, {"y"}});
    EXPECT_EQ(merge({"one", "two"}).exitStatus, 0);
    write("two", {2, 2, {"b"}, {"x"}});
    EXPECT_EQ(merge({"one", "two"}).exitStatus, 1);
    write("one", {1, 2, {}, {}});
    write("two", {2, 2, {}, {}});
    EXPECT_EQ(merge({"one", "two"}).exitStatus, 3);
}

TEST(RecordMergeTest, RefusesWhatDoesNotBelongTogether) {
    MoTestTree const tree;
    Shard const right = {2, 2, {"b"}, {}};
    struct Row {
        char const* error;
        std::function<void(Shard&)> change;
    };
    for (Row const& row :
         {Row{"two/run.jsonl: of another plan than one", [](Shard& shard) { shard.digest = "e"; }},
          Row{"two/run.jsonl: of another selection", [](Shard& shard) { shard.selection = "{\"a\":1}"; }},
          Row{"two/run.jsonl: shard 1, as is one", [](Shard& shard) { shard.index = 1; }},
          Row{"two/run.jsonl: shard 3 of 2", [](Shard& shard) { shard.index = 3; }},
          Row{"two/run.jsonl: shard 2 of 3", [](Shard& shard) { shard.count = 3; }},
          Row{"two/run.jsonl: the record is incomplete", [](Shard& shard) { shard.isComplete = false; }},
          Row{"two/run.jsonl: the pair a is there twice, also in one", [](Shard& shard) { shard.ids = {"a"}; }}}) {
        write("one", {1, 2, {"a"}, {}});
        Shard second = right;
        row.change(second);
        write("two", second);
        try {
            merge({"one", "two"});
            ADD_FAILURE() << row.error;
        } catch (MoDiffRecordError const& error) {
            EXPECT_THAT(error.what(), HasSubstr(row.error));
        }
        EXPECT_EQ(MoTestTree::read("joined/run.jsonl"), "(none)") << row.error;
    }
    write("two", right);
    EXPECT_THROW(merge({"one"}), MoDiffRecordError) << "a shard is missing";
    EXPECT_THROW(merge({"one", "two"}, "two"), MoDiffRecordError) << "a source would be overwritten";
    EXPECT_THROW(merge({}), MoDiffRecordError);
    EXPECT_EQ(merge({"one", "two"}).exitStatus, 0);
}

} // namespace
