// The changes between two texts, by words and by fields, within limits by chance. Made in the master they must give
// the actual; between them nothing may differ. Input: splitter, limits, two texts (see MoFuzzInput).

#include "MoDiffCsvSplitter.h"
#include "MoDiffTextDiff.h"
#include "MoFuzz.h"

namespace {

std::size_t const kLongest = 4096;

void check(std::string const& master, std::string const& actual, MoDiffSplitter const& splitter,
           MoDiffTextDiff::Limits const& limits) {
    std::size_t inMaster = 0;
    std::size_t inActual = 0;
    for (MoDiffChange const& change : MoDiffTextDiff::find(master, actual, splitter, limits)) {
        MoDiffRange const& from = change.ranges.master;
        MoDiffRange const& to = change.ranges.actual;
        MO_FUZZ_REQUIRE(from.begin >= inMaster && from.end >= from.begin && from.end <= master.size());
        MO_FUZZ_REQUIRE(to.begin >= inActual && to.end >= to.begin && to.end <= actual.size());
        MO_FUZZ_REQUIRE(master.substr(inMaster, from.begin - inMaster) ==
                        actual.substr(inActual, to.begin - inActual));
        MO_FUZZ_REQUIRE(!from.isEmpty() || !to.isEmpty());
        inMaster = from.end;
        inActual = to.end;
    }
    MO_FUZZ_REQUIRE(master.substr(inMaster) == actual.substr(inActual));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size > kLongest)
        return 0;
    MoFuzzInput input(data, size);
    bool const isCsv = input.byte() % 2 == 1;
    MoDiffTextDiff::Limits limits;
    if (std::size_t const work = input.number(0x3FFF))
        limits.work = work;
    limits.memory = input.number(0x3FFF);
    auto const [master, actual] = input.twoTexts();
    if (isCsv)
        check(master, actual, MoDiffCsvSplitter(MoDiffCsvSplitter::separatorOf(master)), limits);
    else
        check(master, actual, MoDiffMarkupSplitter(), limits);
    return 0;
}
