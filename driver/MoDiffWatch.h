#ifndef MO_DIFF_WATCH_H
#define MO_DIFF_WATCH_H

#include "MoDiffPairStates.h"
#include "MoDiffRun.h"
#include "MoDiffTreeWatch.h"
#include "MoDiffWatchConsole.h"

#include <functional>
#include <optional>
#include <string>

/// `modiff run --watch`: compares a selection, and then again what changes, until a signal comes. The record holds
/// every verdict; here nothing is kept but what the files were like.
class MoDiffWatch {
public:
    /// What is to be compared, as it is at one time.
    struct Scene {
        MoDiffSuiteConfiguration configuration;
        MoDiffPlan plan;
    };
    using IsStale = std::function<bool(MoDiffPair const&)>;
    struct Actions {
        /// Reads the configuration and the tree, and enters the working directory. Raises std::exception when there
        /// is nothing that could be compared.
        std::function<Scene()> look;
        /// Compares, everything without isStale.
        std::function<MoDiffRunReport(Scene const&, IsStale const&, MoDiffRunEvents&)> compare;
    };

    /// @param actions      those of the run
    /// @param outDirectory of the record, whose changes are none
    /// @param start        where a configuration file would be looked for
    MoDiffWatch(Actions actions, std::string outDirectory, std::string start, MoDiffWatchConsole& console);

    /// Goes on with what has been compared until a signal comes.
    /// @param states of the files before they were compared
    /// @return the exit status of the last comparison for SIGINT; 128 and the signal for another one
    int run(Scene scene, MoDiffPairStates states, MoDiffRunReport const& report);

private:
    void update(bool isTreeChanged);
    Scene lookAgain();
    void compare(Scene const& scene);
    MoDiffTreeWatch::Places placesOf(Scene const& scene) const;
    static void addOutput(MoDiffTreeWatch::Places& places, std::string const& directory);
    void showWatching() const;
    void tellTrouble(std::exception const& error);

    Actions m_actions;
    std::string m_outDirectory;
    std::string m_start;
    MoDiffWatchConsole& m_console;
    MoDiffTreeWatch m_tree;
    MoDiffTreeWatch::Places m_places;
    Scene m_scene;
    std::optional<MoDiffPairStates> m_states;
    int m_status = 0;
    std::string m_trouble; ///< why nothing can be compared at the moment; "" when it can
};

#endif
