#ifndef MO_DIFF_PAGE_BUDGET_H
#define MO_DIFF_PAGE_BUDGET_H

#include <algorithm>
#include <cstddef>

/// Shares out how large pages may become together. What one leaves is for the others.
class MoDiffPageBudget {
public:
    /// @param bytes all together; more only when many pages take the least
    /// @param least, most of one page
    MoDiffPageBudget(std::size_t bytes, std::size_t pages, std::size_t least, std::size_t most)
        : m_bytes(bytes), m_pages(pages), m_least(least), m_most(most) {}

    /// How much the next page may take.
    std::size_t share() const { return std::clamp(m_bytes / std::max<std::size_t>(m_pages, 1), m_least, m_most); }
    /// Ends a page.
    void take(std::size_t bytes) {
        m_bytes -= std::min(m_bytes, bytes);
        m_pages -= std::min<std::size_t>(m_pages, 1);
    }

private:
    std::size_t m_bytes;
    std::size_t m_pages;
    std::size_t m_least;
    std::size_t m_most;
};

#endif
