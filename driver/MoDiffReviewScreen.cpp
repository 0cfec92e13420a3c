#include "MoDiffReviewScreen.h"

#include "MoDiffConsole.h"
#include "MoDiffShownText.h"
#include "MoDiffStyledText.h"
#include "MoDiffVerifiedAcceptance.h"

#include <algorithm>
#include <iostream>
#include <utility>

using MoDiffShownText::escaped;

namespace {

using Session = MoDiffReviewSession;

char const* const kStates[] = {"", "ACCEPT  ", "REJECT  "}; // in the order of Session::State
std::size_t const kFooterRows = 2;
// Both fit into 80 columns.
char const kKeys[] = "a accept  r reject  s skip  g group  f folder  n p move  u undo  / find  q quit";
char const kScrollKeys[] = "space b arrows scroll";

MoDiffStyledLine plain(std::string const& text) {
    return {{MoDiffStyle::eContext, text}};
}

std::string pairsOf(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " pair" : " pairs");
}

/// A text without its last character.
void dropLast(std::string& text) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xc0u) == 0x80u)
        text.pop_back();
    if (!text.empty())
        text.pop_back();
}

/// As much of an escaped text as fits into a row.
std::string fitted(std::string const& text, std::size_t columns) {
    return text.substr(0, MoDiffShownText::fit(text, columns).bytes);
}

} // namespace

MoDiffReviewScreen::MoDiffReviewScreen(Session& session, std::vector<MoDiffGroups::Group> const& groups,
                                       Explain explain, Save save)
    : m_session(session), m_groups(groups), m_explain(std::move(explain)), m_save(std::move(save)) {
}

MoDiffReviewScreen::End MoDiffReviewScreen::run() {
    while (true) {
        End end = eInterrupted;
        if (m_session.isAtEnd()) {
            if (confirmEnd(end))
                return end;
            m_session.goToFirstOpen();
        }
        draw("");
        std::string const key = m_terminal.readKey();
        if (key.empty() || m_isInterrupted)
            return eInterrupted;
        m_message.clear();
        if (!handle(key) && confirmEnd(end))
            return end;
    }
}

/// @return false when the user wants to leave
bool MoDiffReviewScreen::handle(std::string const& key) {
    if (move(key) || decide(key, Session::ePair))
        return true;
    if (key == "g")
        decideWider(Session::eGroup);
    else if (key == "f")
        decideWider(Session::eFolder);
    else if (key == "/")
        search();
    else if (key == "u")
        m_message = m_session.undo() ? "taken back" : "there is nothing to take back";
    if (key == "u")
        m_save();
    return key != "q";
}

bool MoDiffReviewScreen::move(std::string const& key) {
    std::size_t const last = m_lines.size() - std::min(m_lines.size(), m_room);
    std::size_t const page = m_room > 1 ? m_room - 1 : 1;
    if (key == "n")
        m_session.goForward();
    else if (key == "p")
        m_session.goBack();
    else if (key == " " || key == "pagedown")
        m_first = std::min(m_first + page, last);
    else if (key == "b" || key == "pageup")
        m_first -= std::min(m_first, page);
    else if (key == "down" || key == "j" || key == "enter")
        m_first = std::min(m_first + 1, last);
    else if (key == "up" || key == "k")
        m_first -= std::min<std::size_t>(m_first, 1);
    else if (key == "home" || key == "end")
        m_first = key == "home" ? 0 : last;
    else
        return false;
    return true;
}

bool MoDiffReviewScreen::decide(std::string const& key, Scope scope) {
    if (key == "s") {
        m_session.skip(scope);
        return true;
    }
    MoDiffPairResult const& pair = *m_session.items()[m_session.position()].pair;
    if (key == "a") {
        std::size_t const count = m_session.accept(scope);
        m_message = count > 0 ? pairsOf(count) + " to be accepted"
                              : MoDiffVerifiedAcceptance::whyNot(MoDiffAcceptanceJournal::eReplace, pair);
    } else if (key == "r") {
        bool isCancelled = false;
        std::string const remark = ask("why is it wrong? ", isCancelled);
        if (!isCancelled)
            m_message = pairsOf(m_session.reject(scope, remark)) + " rejected";
    } else {
        return false;
    }
    m_save();
    return true;
}

void MoDiffReviewScreen::decideWider(Scope scope) {
    std::string const what = scope == Session::eGroup ? "whole group, " : "this folder, ";
    decide(keyFor(what + pairsOf(m_session.countMeant(scope)) + ":  a accept  r reject  s skip  other keys: back"),
           scope);
}

void MoDiffReviewScreen::search() {
    bool isCancelled = false;
    std::string const text = ask("search for a part of an id: ", isCancelled);
    if (isCancelled)
        return;
    m_sought = text.empty() ? m_sought : text;
    if (!m_session.search(m_sought))
        m_message = "no pair has " + escaped(m_sought) + " in its id";
}

/// @return false when the review is to go on
bool MoDiffReviewScreen::confirmEnd(End& end) {
    Session::Counts const counts = m_session.counts();
    std::string const question = counts.accepted > 0 ? "Accept now?  y yes  n later, decisions are kept  b back"
                                                     : "Leave?  y yes, decisions are kept  b back";
    m_message.clear();
    std::string key;
    while (key != "y" && key != "n" && key != "escape" && key != "b" && !m_isInterrupted)
        key = keyFor(question);
    if (m_isInterrupted)
        end = eInterrupted;
    else
        end = key == "y" && counts.accepted > 0 ? eCarryOut : eKeep;
    return key == "y" || key == "n" || m_isInterrupted;
}

std::string MoDiffReviewScreen::keyFor(std::string const& question) {
    std::string key;
    do {
        draw(question);
        key = m_terminal.readKey();
    } while (key == "resize");
    m_isInterrupted = m_isInterrupted || key.empty();
    return key;
}

/// Reads a line of text.
std::string MoDiffReviewScreen::ask(std::string const& question, bool& isCancelled) {
    std::string text;
    while (true) {
        std::string const key = keyFor(question + escaped(text) + "_");
        isCancelled = key == "escape" || m_isInterrupted;
        if (key == "enter" || isCancelled)
            return text;
        if (key == "backspace")
            dropLast(text);
        else if (key.size() == 1 || (static_cast<unsigned char>(key[0]) & 0x80u) != 0)
            text += key;
    }
}

void MoDiffReviewScreen::loadLines(std::size_t columns) {
    if (m_shown == m_session.position() && m_columns == columns)
        return;
    m_first = m_shown == m_session.position() ? m_first : 0;
    m_shown = m_session.position();
    m_columns = columns;
    m_lines.clear();
    if (m_session.isAtEnd())
        return;
    for (MoDiffStyledLine const& line : m_explain(*m_session.items()[m_shown].pair))
        for (MoDiffStyledLine& row : MoDiffStyledText::wrapped(line, columns))
            m_lines.push_back(std::move(row));
}

std::vector<MoDiffStyledLine> MoDiffReviewScreen::head(std::size_t columns) const {
    if (m_session.isAtEnd())
        return {{{MoDiffStyle::eLabel, "The end"}}};
    Session::Item const& item = m_session.items()[m_session.position()];
    std::string const place = std::to_string(m_session.position() + 1) + "/" +
                              std::to_string(m_session.items().size()) + "  group " + std::to_string(item.group + 1) +
                              ": " + MoDiffShownText::printable(MoDiffGroups::titleOf(m_groups[item.group]));
    std::string const state = kStates[item.state] + std::string(wordOf(item.pair->outcome)) + "  ";
    std::size_t const room = columns > state.size() ? columns - state.size() : 1;
    std::vector<MoDiffStyledLine> lines = {{{MoDiffStyle::eLabel, fitted(place, columns)}},
                                           plain(state + MoDiffShownText::escapedEnd(item.pair->id, room))};
    if (!item.remark.empty())
        lines.push_back({{MoDiffStyle::eNote, fitted(escaped(item.remark), columns)}});
    return lines;
}

std::string MoDiffReviewScreen::keysLine() const {
    if (!m_message.empty())
        return m_message;
    Session::Counts const counts = m_session.counts();
    std::string const more =
        m_first + m_room < m_lines.size() ? std::to_string(m_lines.size() - m_first - m_room) + " lines more  " : "";
    return more + std::to_string(counts.accepted) + " to be accepted, " + std::to_string(counts.rejected) +
           " rejected, " + std::to_string(counts.open) + " open.  " + (more.empty() ? "" : kScrollKeys);
}

/// Draws the whole screen: what is looked at, its lines, and below them the keys or a question.
void MoDiffReviewScreen::draw(std::string const& footer) {
    MoDiffTerminal::Size const size = MoDiffTerminal::size();
    std::size_t const columns =
        std::max<std::size_t>(size.columns, 2) - 1; // the last one would wrap on some terminals
    loadLines(columns);
    std::vector<MoDiffStyledLine> rows = head(columns);
    std::size_t const used = rows.size() + kFooterRows;
    m_room = size.rows > used ? size.rows - used : 1;
    for (std::size_t index = m_first; index < std::min(m_first + m_room, m_lines.size()); ++index)
        rows.push_back(m_lines[index]);
    rows.resize(std::max(size.rows, kFooterRows) - kFooterRows);
    bool const colours = MoDiffConsole::isColourful();
    std::string screen = "\x1b[H";
    for (MoDiffStyledLine const& row : rows)
        screen += MoDiffStyledText::shown(row, colours) + "\x1b[K\r\n";
    screen += fitted(keysLine(), columns) + "\x1b[K\r\n\x1b[7m" + fitted(footer.empty() ? kKeys : footer, columns) +
              "\x1b[0m\x1b[K\x1b[J";
    std::cout << screen << std::flush;
}
