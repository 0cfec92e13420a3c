#include "MoDiffDoctorCommand.h"

#include "MoDiffConsole.h"
#include "MoDiffDoctor.h"
#include "MoDiffShownText.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

namespace {

struct Severity {
    MoDiffConsole::Colour colour;
    char const* word;
};

Severity severityOf(MoDiffFinding const& finding) {
    switch (finding.severity) {
    case MoDiffFinding::eFine:
        return {MoDiffConsole::eGreen, "fine"};
    case MoDiffFinding::eAdvice:
        return {MoDiffConsole::eYellow, "advice"};
    default:
        return {MoDiffConsole::eRed, "trouble"};
    }
}

} // namespace

MoDiffDoctorCommand::MoDiffDoctorCommand(CLI::App& parent)
    : MoDiffCommand(parent, "doctor", "Look for whatever could spoil a run",
                    "Looks at the scripts and what they need, at the machine, and at the tree of masters and actual\n"
                    "files. Writes nothing.\n\n"
                    "Exit status: 0 a run can give its verdicts; 2 something stands in its way."),
      m_configuration(options()) {
    options()
        .add_option("--out", m_out, "Directory that a run would write; default: modiff-run beside the configuration")
        ->type_name("DIR")
        ->check(notEmpty());
}

int MoDiffDoctorCommand::run() {
    MoDiffSuiteConfiguration const configuration = m_configuration.read();
    std::string const out = m_out.empty() ? MoDiffConfigurationOptions::defaultOutDirectory(configuration)
                                          : std::filesystem::absolute(m_out).string();
    MoDiffConfigurationOptions::enterWorkingDirectory(configuration);
    MoDiffConsole console(std::cout, MoDiffConsole::eById, MoDiffConsole::isColourful());
    std::size_t troubles = 0;
    std::string area;
    for (MoDiffFinding const& finding : MoDiffDoctor::examine(configuration, out)) {
        if (finding.area != area)
            std::cout << (area.empty() ? "" : "\n") << finding.area << '\n';
        area = finding.area;
        Severity const severity = severityOf(finding);
        console.showNote(severity.colour, severity.word, finding.text, "");
        if (!finding.remedy.empty())
            console.showNote(MoDiffConsole::eNoColour, "", finding.remedy, "");
        troubles += finding.severity == MoDiffFinding::eTrouble;
    }
    std::cout << '\n'
              << (troubles == 0 ? "Nothing stands in the way of a run."
                                : std::to_string(troubles) + (troubles == 1 ? " trouble" : " troubles"))
              << '\n';
    return finishOutput(troubles == 0 ? eExitPassed : eExitTrouble);
}
