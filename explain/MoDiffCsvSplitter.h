#ifndef MO_DIFF_CSV_SPLITTER_H
#define MO_DIFF_CSV_SPLITTER_H

#include "MoDiffMarkupSplitter.h"

/// Takes comma-separated values apart: records as lines, fields and separators as tokens. A field in quotes may hold
/// separators, line ends and doubled quotes.
class MoDiffCsvSplitter : public MoDiffSplitter {
public:
    explicit MoDiffCsvSplitter(char separator) : m_separator(separator) {}

    /// The separator that stands most often in the first record: comma, semicolon, tabulator or bar; comma for none.
    static char separatorOf(std::string_view text);

    bool joins(std::string_view) const override { return false; }
    char getSeparator() const { return m_separator; }

protected:
    std::size_t wordEnd(std::string_view text, std::size_t from) const override;
    std::size_t tokenEnd(std::string_view text, std::size_t from) const override;
    std::size_t lineEnd(std::string_view text, std::size_t from) const override;

private:
    char m_separator;
    MoDiffMarkupSplitter m_words;
};

/// Counts records and fields through a text.
class MoDiffCsvPlaces {
public:
    struct Place {
        std::size_t record; ///< from 1
        std::size_t field;  ///< from 1
    };

    /// Both must outlive the counter.
    MoDiffCsvPlaces(std::string_view text, MoDiffCsvSplitter const& splitter) : m_text(text), m_splitter(splitter) {}

    /// The record and the field that hold a byte; a separator or line end belongs to the field before it. Indexes
    /// must not decrease from call to call.
    Place at(std::size_t index);

private:
    std::string_view m_text;
    MoDiffCsvSplitter const& m_splitter;
    std::size_t m_token = 0; ///< where the next one begins
    Place m_place{1, 1};     ///< there
};

#endif
