#ifndef MO_SUITE_TREE_H
#define MO_SUITE_TREE_H

#include "MoDiffPlan.h"
#include "MoDiffSuiteConfiguration.h"
#include "MoTestTree.h"

#include <algorithm>
#include <cstdlib>
#include <string>

/// A tree with pairs that are written by hand, and the plan for them.
class MoSuiteTree : public MoTestTree {
public:
    MoSuiteTree() {
        configuration.memoryLimit = std::uint64_t{512} << 20;
        setenv("PATH", "/usr/bin:/bin", 1); // where python is no script that looks for the right one
    }

    /// Adds a pair of a format to the plan.
    MoDiffPair const& add(std::string const& format, std::string const& name) {
        MoDiffEngineSetup const& setup = setupFor(format);
        auto const engine = setup.format->makeEngine(setup.settings);
        std::string const pattern = engine->getMasterFileGlobExpression("reports/" + name);
        MoDiffPair pair;
        pair.setup = &setup;
        pair.master = pattern.substr(0, pattern.rfind('/') + 1) + name;
        pair.actual = engine->getActualFile(pair.master);
        pair.id = format + ":" + pair.master;
        plan.pairs.push_back(pair);
        std::sort(plan.pairs.begin(), plan.pairs.end(),
                  [](MoDiffPair const& left, MoDiffPair const& right) { return left.id < right.id; });
        plan.selected.push_back(plan.selected.size());
        return *std::find_if(plan.pairs.begin(), plan.pairs.end(),
                             [&pair](MoDiffPair const& candidate) { return candidate.id == pair.id; });
    }
    /// Adds a pair and writes both files.
    MoDiffPair const& add(std::string const& format, std::string const& name, std::string const& master,
                          std::string const& actual) {
        MoDiffPair const& pair = add(format, name);
        write(pair.master, master);
        write(pair.actual, actual);
        return pair;
    }
    /// Puts a script in the place of the one that compares VMD files.
    static void writeScript(std::string const& text) {
        write("../../src/kavu/Builds/tools/diffvmd/diffvmd.py", text);
    }

    MoDiffPlan plan;
    MoDiffSuiteConfiguration configuration;

private:
    MoDiffEngineSetup const& setupFor(std::string const& format) {
        for (MoDiffEngineSetup const& setup : plan.setups)
            if (setup.format->word == format)
                return setup;
        plan.setups.push_back({MoDiffFormatTable::find(format), {}});
        return plan.setups.back();
    }
};

#endif
