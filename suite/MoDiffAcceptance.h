#ifndef MO_DIFF_ACCEPTANCE_H
#define MO_DIFF_ACCEPTANCE_H

#include "MoDiffAcceptanceJournal.h"
#include "MoDiffDescriptor.h"
#include "MoDiffGitState.h"
#include "MoDiffPairResult.h"

#include <string>
#include <vector>

/// Makes actual files masters, or takes masters away, as somebody decided who looked at a record. Each decision is
/// bound to the bytes that were seen: what has changed since the run is refused.
///
/// A master is replaced as a whole. What is going to be done stands in a journal before the first master is touched;
/// when an acceptance is interrupted, the next one on the same record finishes it. One at a time works on a record;
/// another one waits. Paths are seen from the working directory of the run.
class MoDiffAcceptance {
public:
    struct Options {
        std::string remark;  ///< kept with what is accepted
        bool force = false;  ///< also masters with changes that git could not give back
        bool dryRun = false; ///< tells what would be done
    };
    /// What is asked for, with the pair as the record tells it.
    struct Request {
        MoDiffAcceptanceJournal::Action action;
        MoDiffPairResult pair; ///< for a new master: id, master and actual; the hash of the actual, when it is known
    };
    enum State {
        eAccepted, ///< or would be
        eAlready,  ///< the master is as wanted
        eRefused,  ///< what was looked at isn't there any more, or must not be touched
        eTrouble   ///< could not be done
    };
    struct Answer {
        std::string pair;
        State state;
        std::string reason; ///< why it was not accepted, or what is left to be done
    };

    /// Takes the directory of a record, waiting for another acceptance there. Raises std::system_error when it can't
    /// be written.
    explicit MoDiffAcceptance(std::string const& recordDirectory);

    /// Finishes what an interrupted acceptance left, as far as the files are as it found them.
    /// @return an answer for each pair that it had not dealt with; none when nothing was left
    std::vector<Answer> finishInterrupted();

    /// Carries out the requests and answers each, in their order.
    std::vector<Answer> perform(std::vector<Request> const& requests, Options const& options);

private:
    using Step = MoDiffAcceptanceJournal::Step;

    Answer prepare(Request const& request, Options const& options, Step& step);
    void checkReplaced(Request const& request, Options const& options, Step& step);
    Answer carryOut(Step const& step, bool wasInterrupted);

    MoDiffDescriptor m_lock;
    MoDiffAcceptanceJournal m_journal;
    MoDiffGitState m_git;
};

#endif
