#include "MoDiffCompletion.h"

#include "MoDiffConfigurationOptions.h"
#include "MoDiffConfigurationReader.h"
#include "MoDiffFormatTable.h"
#include "MoDiffRecordReader.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

namespace {

using Words = std::vector<std::string>;

enum Kind { eNothing, eFiles, eDirectories, eFormats, eAnyPairs, eFailedPairs };

/// By an option's name, or by what its value is called in --help.
struct Row {
    char const* name;
    Kind kind;
} const kRows[] = {
    {"--format", eFormats},  {"FILE", eFiles},      {"PATH", eFiles},
    {"MASTER", eFiles},      {"ACTUAL", eFiles},    {"DIR", eDirectories},
    {"[DIR]", eDirectories}, {"FILTER", eAnyPairs}, {"PAIR", eFailedPairs},
};

Kind kindOf(CLI::Option const& option) {
    std::string const name = option.get_name(option.get_positional());
    std::string const type = option.get_type_name();
    auto const row = std::find_if(std::begin(kRows), std::end(kRows), [&](Row const& candidate) {
        return name == candidate.name || type == candidate.name;
    });
    return row == std::end(kRows) ? eNothing : row->kind;
}

bool isOption(std::string const& word) {
    return word.size() > 1 && word.front() == '-';
}

/// One word that is to be completed.
class Completion {
public:
    Completion(CLI::App const& app, Words const& words, std::ostream& out);

    void print() const;

private:
    CLI::Option const* findOption(std::string const& name) const;
    CLI::Option const* waitingOption() const;
    std::string recordDirectory() const;
    void offer(std::string const& word, std::string const& about) const;
    void offerCommands() const;
    void offerOptions() const;
    void offerPositional() const;
    void offerValues(CLI::Option const& option, std::string const& prefix) const;
    void offerPairs(bool onlyFailed) const;

    CLI::App const& m_app;
    CLI::App const* m_command; ///< the program itself before its command is known
    Words m_before;            ///< the word that is completed
    std::string m_word;
    std::ostream& m_out;
};

Completion::Completion(CLI::App const& app, Words const& words, std::ostream& out)
    : m_app(app), m_command(&app), m_before(words.begin(), words.end() - 1), m_word(words.back()), m_out(out) {
    // Some shells take "--format=html" for three words.
    m_before.erase(std::remove(m_before.begin(), m_before.end(), "="), m_before.end());
    if (m_word == "=")
        m_word.clear();
    for (CLI::App const* const command : app.get_subcommands([](CLI::App const*) { return true; }))
        if (std::find(m_before.begin(), m_before.end(), command->get_name()) == m_before.begin() && !m_before.empty())
            m_command = command; // no option stands before the command
}

CLI::Option const* Completion::findOption(std::string const& name) const {
    return isOption(name) ? m_command->get_option_no_throw(name) : nullptr;
}

/// The option whose value the word is.
CLI::Option const* Completion::waitingOption() const {
    CLI::Option const* const option = m_before.empty() ? nullptr : findOption(m_before.back());
    return option && option->get_items_expected_min() > 0 ? option : nullptr;
}

void Completion::print() const {
    bool const isBehindDashes = std::find(m_before.begin(), m_before.end(), "--") != m_before.end();
    std::size_t const equals = m_word.find('=');
    CLI::Option const* const joined = equals == std::string::npos ? nullptr : findOption(m_word.substr(0, equals));
    if (isBehindDashes)
        return offerPositional();
    if (joined)
        return offerValues(*joined, m_word.substr(0, equals + 1));
    if (CLI::Option const* const option = waitingOption())
        return offerValues(*option, "");
    if (!m_word.empty() && m_word.front() == '-')
        return offerOptions();
    if (m_command == &m_app)
        return offerCommands();
    offerPositional();
}

void Completion::offer(std::string const& word, std::string const& about) const {
    auto const isControl = [](unsigned char letter) { return letter < ' ' || letter == 0x7f; };
    if (word.rfind(m_word, 0) == 0 && std::none_of(word.begin(), word.end(), isControl))
        m_out << word << '\t' << about << '\n';
}

void Completion::offerCommands() const {
    for (CLI::App const* const command : m_app.get_subcommands([](CLI::App const*) { return true; }))
        offer(command->get_name(), command->get_description());
}

void Completion::offerOptions() const {
    for (CLI::Option const* const option : m_command->get_options())
        for (std::string const& name : option->get_lnames())
            offer("--" + name, option->get_description());
}

void Completion::offerPositional() const {
    auto const positionals =
        m_command->get_options([](CLI::Option const* option) { return option->get_positional(); });
    if (!positionals.empty())
        offerValues(*positionals.front(), "");
}

void Completion::offerValues(CLI::Option const& option, std::string const& prefix) const {
    switch (kindOf(option)) {
    case eFiles:
        m_out << "\tfiles\n";
        break;
    case eDirectories:
        m_out << "\tdirectories\n";
        break;
    case eFormats:
        for (MoDiffFormatRow const& row : MoDiffFormatTable::rows())
            offer(prefix + row.word, MoDiffFormatTable::comparisonWords(row));
        break;
    case eAnyPairs:
    case eFailedPairs:
        offerPairs(kindOf(option) == eFailedPairs);
        break;
    case eNothing:
        break;
    }
}

/// Where --record says, or where the last run left it.
std::string Completion::recordDirectory() const {
    auto const option = std::find(m_before.begin(), m_before.end(), "--record");
    if (option != m_before.end() && option + 1 != m_before.end())
        return *(option + 1);
    return MoDiffConfigurationOptions::defaultOutDirectory(
        MoDiffConfigurationReader::read(MoDiffConfigurationReader::find(".")));
}

void Completion::offerPairs(bool onlyFailed) const {
    MoDiffRecordReader reader(recordDirectory());
    for (MoDiffPairResult result; reader.next(result);)
        if (!onlyFailed || result.outcome != MoDiffOutcome::ePassed)
            offer(result.id, wordOf(result.outcome));
}

} // namespace

void MoDiffCompletion::print(CLI::App const& app, std::vector<std::string> const& words, std::ostream& out) {
    if (words.empty())
        return;
    try {
        Completion(app, words, out).print();
    } catch (std::exception const&) {
        // A message would end up in the line that is being typed.
    }
}
