#ifndef MO_PACKED_RANGES_H
#define MO_PACKED_RANGES_H

#include <cstddef>
#include <deque>
#include <iterator>

/// Ranges of a text in ascending order, each with a small number. Packed: one that is short and near the one before
/// it takes three bytes. They are read from the first one on, or from a mark.
class MoPackedRanges {
    using Bytes = std::deque<unsigned char>; // grows without being copied, so that its bytes are never held twice

public:
    struct Range {
        std::size_t begin;
        std::size_t length;
        unsigned step; ///< the number

        std::size_t end() const { return begin + length; }
    };

    /// Steps through the ranges, which must outlive it and stay as they are.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Range;
        using difference_type = std::ptrdiff_t;
        using pointer = Range const*;
        using reference = Range const&;

        Range const& operator*() const { return m_range; }
        Range const* operator->() const { return &m_range; }
        Iterator& operator++() {
            m_at = m_nextAt;
            read();
            return *this;
        }
        bool operator==(Iterator const& other) const { return m_at == other.m_at; }
        bool operator!=(Iterator const& other) const { return m_at != other.m_at; }

    private:
        friend class MoPackedRanges;
        Iterator(Bytes const& bytes, std::size_t at, std::size_t lastEnd)
            : m_next(bytes.begin() + static_cast<std::ptrdiff_t>(at)), m_at(at), m_nextAt(at),
              m_end(bytes.size()), m_range{lastEnd, 0, 0} {
            read();
        }
        void read() {
            if (m_at == m_end)
                return;
            std::size_t const begin = m_range.end() + number();
            std::size_t const length = number();
            m_range = {begin, length, static_cast<unsigned>(number())};
        }
        std::size_t number() {
            std::size_t value = 0;
            for (unsigned shift = 0;; shift += kBits) {
                unsigned char const byte = *m_next++;
                ++m_nextAt;
                value |= static_cast<std::size_t>(byte & (kMore - 1U)) << shift;
                if (byte < kMore)
                    return value;
            }
        }

        Bytes::const_iterator m_next;
        std::size_t m_at;
        std::size_t m_nextAt;
        std::size_t m_end;
        Range m_range;
    };

    /// A place between ranges.
    struct Mark {
        std::size_t offset = 0;
        std::size_t lastEnd = 0; ///< of the range before it
    };

    /// Adds a range that does not begin before the end of the last one. One that follows it at once and has the same
    /// number becomes part of it.
    void append(Range range) {
        if (!isEmpty() && m_last.end() == range.begin && m_last.step == range.step) {
            range = {m_last.begin, m_last.length + range.length, range.step};
            m_bytes.resize(m_beforeLast.offset);
        } else {
            m_beforeLast = {m_bytes.size(), m_last.end()};
        }
        put(range.begin - m_beforeLast.lastEnd);
        put(range.length);
        put(range.step);
        m_last = range;
    }

    bool isEmpty() const { return m_bytes.empty(); }
    Iterator begin() const { return from({}); }
    Iterator end() const { return {m_bytes, m_bytes.size(), 0}; }
    Iterator from(Mark const& mark) const { return {m_bytes, mark.offset, mark.lastEnd}; }
    /// The mark in front of an iterator's range, which follows a range that ends at lastEnd.
    static Mark markOf(Iterator const& iterator, std::size_t lastEnd) { return {iterator.m_at, lastEnd}; }

private:
    static unsigned constexpr kBits = 7; ///< of a number in a byte; the eighth tells that more follow
    static unsigned constexpr kMore = 1U << kBits;

    void put(std::size_t value) {
        for (; value >= kMore; value >>= kBits)
            m_bytes.push_back(static_cast<unsigned char>((value & (kMore - 1U)) | kMore));
        m_bytes.push_back(static_cast<unsigned char>(value));
    }

    Bytes m_bytes;
    Range m_last{0, 0, 0};
    Mark m_beforeLast;
};

#endif
