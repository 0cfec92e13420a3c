#include "MoDiffCommand.h"

#include "MoDiffTrouble.h"

#include <CLI/CLI.hpp>
#include <iostream>

MoDiffCommand::MoDiffCommand(CLI::App& parent, char const* word, char const* about, std::string const& footer)
    : m_options(*parent.add_subcommand(word, about)) {
    m_options.footer(footer);
}

bool MoDiffCommand::isAsked() const {
    return m_options.parsed();
}

std::string MoDiffCommand::getWord() const {
    return m_options.get_name();
}

CLI::Validator MoDiffCommand::notEmpty() {
    return {[](std::string& value) { return value.empty() ? "needs a value that is not empty" : ""; }, ""};
}

bool MoDiffCommand::isGiven(char const* option) const {
    return m_options.count(option) > 0;
}

CLI::Validator MoDiffCommand::asGiven() {
    auto const strip = [](std::string& value) -> std::string {
        if (!value.empty() && value.front() == kVerbatim)
            value.erase(0, 1);
        return "";
    };
    return {strip, ""};
}

CLI::Validator MoDiffCommand::oneOf(std::map<std::string, int> const& numbers) {
    auto const transform = [numbers](std::string& value) -> std::string {
        auto const found = numbers.find(CLI::detail::to_lower(value));
        if (found != numbers.end()) {
            value = std::to_string(found->second);
            return "";
        }
        std::string message = "there is no " + value + "; choose one of";
        for (auto const& [word, number] : numbers)
            message.append(word == numbers.begin()->first ? " " : ", ").append(word);
        return message;
    };
    return {transform, ""};
}

int MoDiffCommand::finishOutput(int status) {
    if (std::cout.flush())
        return status;
    MoDiffTrouble().report("cannot write standard output");
    return eExitTrouble;
}
