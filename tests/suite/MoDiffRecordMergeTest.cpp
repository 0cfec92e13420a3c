#include "MoDiffRecordMerge.h"
#include "MoDiffPlan.h"
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
    std::size_t miscounted = 0;
    std::vector<std::string> unreadable{};
    std::vector<std::string_view> chosen{"a", "b"};
};

void write(std::string const& directory, Shard const& shard) {
    MoDiffRecordHeader header;
    header.digest = shard.digest;
    header.selection = shard.selection;
    header.chosenDigest = MoDiffPlan::digestOf(shard.chosen);
    header.unreadable = shard.unreadable;
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
    end.totals.add(MoDiffOutcome::ePassed, shard.miscounted);
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
    Shard one = {1, 2, {"c", "a"}, {"new", "made later"}};
    Shard two = {2, 2, {"b"}, {"new"}, MoDiffOutcome::eMissing};
    one.chosen = two.chosen = {"a", "b", "c"};
    write("one", one);
    write("two", two);
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
    Shard empty = {1, 2, {}, {}};
    empty.chosen = {};
    write("one", empty);
    empty.index = 2;
    write("two", empty);
    EXPECT_EQ(merge({"one", "two"}).exitStatus, 3);
    empty.unreadable = {"a folder"};
    write("two", empty);
    EXPECT_EQ(merge({"one", "two"}).exitStatus, 2);
    EXPECT_THAT(MoDiffRecordReader("joined").getHeader().unreadable, ElementsAre("a folder"));
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
          Row{"two/run.jsonl: of another selection", [](Shard& shard) { shard.chosen = {"b"}; }},
          Row{"two/run.jsonl: its counts do not fit its pairs", [](Shard& shard) { shard.miscounted = 1; }},
          Row{"one/run.jsonl: with the other shards, its pairs are not", [](Shard& shard) { shard.ids = {"B"}; }},
          Row{"one/run.jsonl: with the other shards, its pairs are not", [](Shard& shard) { shard.ids = {}; }},
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
