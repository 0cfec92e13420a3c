#include "MoDiffWatch.h"

#include "MoDiffConfigurationReader.h"
#include "MoDiffDiscovery.h"
#include "MoDiffExitStatus.h"
#include "MoDiffInterrupt.h"
#include "MoDiffShownText.h"
#include "MoDiffTrouble.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

int constexpr kStatusOfSignals = 128;
int constexpr kMostLooks = 5; // at a tree whose directories keep changing

/// What some texts have that others had not.
std::vector<std::string> added(std::vector<std::string> now, std::vector<std::string> before) {
    std::vector<std::string> more;
    std::sort(now.begin(), now.end());
    std::sort(before.begin(), before.end());
    std::set_difference(now.begin(), now.end(), before.begin(), before.end(), std::back_inserter(more));
    return more;
}

/// An absolute path without "." and "..", nor a "/" at its end.
std::string normal(fs::path const& path) {
    std::string text = path.lexically_normal().string();
    text.erase(std::max<std::size_t>(text.find_last_not_of('/') + 1, 1));
    return text;
}

bool isInside(std::string const& path, std::string const& directory) {
    return path == directory || path.rfind(directory + "/", 0) == 0;
}

} // namespace

MoDiffWatch::MoDiffWatch(Actions actions, std::string outDirectory, std::string start, MoDiffWatchConsole& console)
    : m_actions(std::move(actions)), m_outDirectory(std::move(outDirectory)), m_start(std::move(start)),
      m_console(console) {
    std::error_code ignored;
    m_outDirectory = fs::weakly_canonical(m_outDirectory, ignored).string();
}

int MoDiffWatch::run(Scene scene, MoDiffPairStates states, MoDiffRunReport const& report) {
    m_scene = std::move(scene);
    m_states = std::move(states);
    m_status = report.exitStatus;
    m_places = placesOf(m_scene);
    std::atomic<int> const& signal = MoDiffInterrupt::getSignal();
    update(/*isTreeChanged=*/true); // since the states were noted
    if (m_trouble.empty())
        showWatching();
    while (signal == 0 && std::cout)
        if (MoDiffTreeWatch::News const news = m_tree.wait(signal))
            update(news.names);
    if (signal != 0 && signal != SIGINT)
        return kStatusOfSignals + signal;
    return m_trouble.empty() ? m_status : eExitTrouble;
}

void MoDiffWatch::update(bool isTreeChanged) {
    std::string const whyLooking = m_tree.whyLooking();
    try {
        if (isTreeChanged) {
            Scene scene = lookAgain();
            compare(scene);
            m_scene = std::move(scene);
        } else {
            compare(m_scene);
        }
    } catch (std::exception const& error) {
        tellTrouble(error);
        return;
    }
    bool const isNews = !m_trouble.empty() || (!m_places.empty() && whyLooking != m_tree.whyLooking());
    m_trouble.clear();
    if (isNews)
        showWatching();
}

/// What is watched is watched before it is looked at, so that nothing is overlooked.
MoDiffWatch::Scene MoDiffWatch::lookAgain() {
    for (int looks = 1;; ++looks) {
        m_tree.watch(m_places);
        Scene scene = m_actions.look();
        MoDiffTreeWatch::Places places = placesOf(scene);
        if (places == m_places || looks == kMostLooks)
            return scene;
        m_places = std::move(places);
    }
}

void MoDiffWatch::compare(Scene const& scene) {
    MoDiffPairStates now(scene.plan);
    bool const isOther = scene.configuration.toJson() != m_scene.configuration.toJson();
    std::set<std::string> const changed = now.changedSince(*m_states);
    MoDiffWatchConsole::Changes const changes = {now.goneSince(*m_states),
                                                 added(scene.plan.newFiles, m_scene.plan.newFiles),
                                                 added(scene.plan.unreadable, m_scene.plan.unreadable)};
    bool const isSame = !isOther && changed.empty() && changes.gone.empty() &&
                        scene.plan.newFiles == m_scene.plan.newFiles &&
                        scene.plan.unreadable == m_scene.plan.unreadable;
    if (isSame)
        return;
    MoDiffRunReport const report = m_actions.compare(
        scene, [&](MoDiffPair const& pair) { return isOther || changed.count(pair.id) != 0; }, m_console);
    if (!report.complete) // a signal came, and the record is as it was
        return;
    m_states = std::move(now);
    m_status = report.exitStatus;
    m_console.show(changes, report.totals);
}

MoDiffTreeWatch::Places MoDiffWatch::placesOf(Scene const& scene) const {
    fs::path const here = fs::weakly_canonical(scene.configuration.workingDirectory);
    MoDiffTreeWatch::Places places;
    places[normal(here / "..")]; // of the working directory and the output
    for (std::string const& directory : scene.plan.searched) {
        std::string const path = normal(here / directory);
        if (!isInside(path, m_outDirectory) && !MoDiffDiscovery::mastersFolderOf(directory).empty())
            places[path].contents = true;
        else if (!isInside(path, m_outDirectory))
            places[path];
    }
    for (std::string const& output : scene.plan.outputs)
        addOutput(places, normal(here / output));
    for (std::size_t const index : scene.plan.selected)
        addOutput(places, normal((here / scene.plan.pairs[index].actual).parent_path()));
    fs::path const file = scene.configuration.file.empty() ? fs::path(m_start) / MoDiffConfigurationReader::kFileName
                                                           : fs::path(m_start) / scene.configuration.file;
    places[normal(file.parent_path())].file = file.filename().string();
    return places;
}

/// An output directory may be replaced with all in it.
void MoDiffWatch::addOutput(MoDiffTreeWatch::Places& places, std::string const& directory) {
    MoDiffTreeWatch::Interest& interest = places[directory];
    if (interest.contents)
        return;
    interest.contents = true;
    places[normal(fs::path(directory).parent_path())];
}

void MoDiffWatch::showWatching() const {
    std::size_t const pairs = m_scene.plan.selected.size();
    std::cout << "watching   " << pairs << (pairs == 1 ? " pair" : " pairs") << " in " << m_places.size()
              << " directories; Ctrl-C ends\n";
    if (!m_tree.whyLooking().empty())
        std::cout << "note       " << MoDiffShownText::escaped(m_tree.whyLooking()) << "; looking every "
                  << MoDiffTreeWatch::kLookInterval / std::chrono::seconds(1) << " s\n";
    std::cout.flush();
}

/// The same trouble is told once, however often something changes meanwhile.
void MoDiffWatch::tellTrouble(std::exception const& error) {
    if (m_trouble != error.what())
        MoDiffTrouble().report("waiting for a change", error);
    m_trouble = error.what();
}
