#ifndef MO_DIFF_WORKFLOW_PAUSE_H
#define MO_DIFF_WORKFLOW_PAUSE_H

#include <iosfwd>
#include <string>

/// As long as it lives, GitHub takes nothing that is written for a workflow command. It looks for them in all output,
/// also within lines, and what modiff shows comes from reports.
class MoDiffWorkflowPause {
public:
    /// @param out flushed; must outlive this object
    explicit MoDiffWorkflowPause(std::ostream& out);
    ~MoDiffWorkflowPause();
    MoDiffWorkflowPause(MoDiffWorkflowPause const&) = delete;
    MoDiffWorkflowPause& operator=(MoDiffWorkflowPause const&) = delete;

private:
    std::ostream& m_out;
    std::string m_token; ///< ends the pause; no report can know it
};

#endif
