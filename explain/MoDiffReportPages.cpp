#include "MoDiffReportPages.h"

#include "MoDiffIndexPage.h"
#include "MoDiffPageBudget.h"
#include "MoDiffPageDirectory.h"
#include "MoDiffPairPage.h"

#include <filesystem>
#include <set>
#include <stdexcept>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

char const kIndex[] = "index.html";

std::size_t const kKilobyte = 1024;
std::size_t const kMegabyte = 1024 * kKilobyte;

std::time_t timeOf(std::string const& file) {
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 ? status.st_mtim.tv_sec : 0;
}

std::set<std::string> filesOf(MoDiffPageList const& list) {
    std::set<std::string> files = {kIndex};
    for (MoDiffPageList::Item const& item : list.items())
        files.insert(item.file);
    return files;
}

/// The outermost folder of masters above a file, or the one that it lies in.
fs::path treeOf(std::string const& master) {
    fs::path tree;
    for (fs::path const& step : fs::path(master).parent_path()) {
        tree /= step;
        if (step == "Masters")
            return tree;
    }
    return tree;
}

bool isInside(fs::path const& path, fs::path const& tree) {
    auto const [end, ignored] = std::mismatch(tree.begin(), tree.end(), path.begin(), path.end());
    return end == tree.end();
}

} // namespace

bool MoDiffReportPages::write(MoDiffPageList const& list, MoDiffPairSetups& setups, std::string const& directory,
                              Progress const& progress) {
    MoDiffPageDirectory const pages(directory, filesOf(list));
    std::size_t const count = list.items().size();
    MoDiffPageBudget differences(20 * kMegabyte, count, 64 * kKilobyte, kMegabyte);
    MoDiffPageBudget looks(24 * kMegabyte, count, 32 * kKilobyte, kMegabyte);
    for (std::size_t index = 0; index < count; ++index) {
        if (!progress(index, count, list.items()[index].pair->id))
            return false;
        MoDiffPairPage page(list, setups, index, {differences.share(), looks.share()});
        pages.write(list.items()[index].file, page.toHtml());
        differences.take(page.size().differences);
        looks.take(page.size().look);
    }
    pages.write(kIndex,
                MoDiffIndexPage(list, timeOf(list.record().directory() + "/" + MoDiffRecord::kFileName)).toHtml());
    pages.removeOthers();
    return true;
}

void MoDiffReportPages::refuseInside(MoDiffRecordPairs const& record, std::string const& directory) {
    std::set<fs::path> trees = {"../webcontent"};
    for (MoDiffPairResult const& pair : record.pairs()) {
        trees.insert(treeOf(pair.master));
        trees.insert(fs::path(pair.actual).parent_path());
    }
    fs::path const asked = fs::weakly_canonical(directory);
    fs::path const pairs = fs::weakly_canonical(fs::path(directory) / "pairs"); // may be a link
    for (fs::path const& tree : trees)
        if (fs::path const end = fs::weakly_canonical(fs::absolute(tree));
            isInside(asked, end) || isInside(pairs, end))
            throw std::runtime_error("pages in " + directory + " would lie among masters or actual files, in " +
                                     tree.string());
}
