#include "MoDiffMasterPlace.h"

#include <algorithm>
#include <stdexcept>

namespace {

/// A report whose name is empty. What its masters' glob holds beyond this beginning are the format's folder and the
/// wildcard with the ending.
char const kNamelessReport[] = "./.report";
char const kBeginning[] = "./Masters/";

MoDiffMasterPlace placeOf(MoDiffSuiteConfiguration const& configuration, MoDiffFormatRow const& row,
                          MoDiffConfiguredFolder const& table) {
    MoDiffEngineSettings const settings = {"", table.typeName, table.masterSubDirectory, table.masterSuffix};
    std::string const glob = row.makeEngine(settings)->getMasterFileGlobExpression(kNamelessReport);
    std::size_t const wildcard = glob.rfind("/*");
    if (glob.rfind(kBeginning, 0) != 0 || wildcard == std::string::npos)
        throw std::logic_error("the glob of the format " + std::string(row.word) + " is not understood: " + glob);
    std::string const path = glob.substr(0, wildcard + 1); // ends with "/"
    std::size_t const begin = sizeof kBeginning - 1;
    std::string const folder = path.size() > begin ? path.substr(begin, path.size() - begin - 1) : "";
    auto const& formats = configuration.formats;
    bool const isSelected = std::find(formats.begin(), formats.end(), row.word) != formats.end();
    return {&row, settings, folder, glob.substr(wildcard + 2), isSelected, table.place};
}

} // namespace

std::vector<MoDiffMasterPlace> MoDiffMasterPlace::all(MoDiffSuiteConfiguration const& configuration) {
    std::vector<MoDiffMasterPlace> places;
    for (MoDiffFormatRow const& row : MoDiffFormatTable::rows()) {
        if (!row.takesDirectories)
            places.push_back(placeOf(configuration, row, {}));
        else
            for (MoDiffConfiguredFolder const& table :
                 row.takesSuffix ? configuration.charts : configuration.properties)
                places.push_back(placeOf(configuration, row, table));
    }
    return places;
}

bool MoDiffMasterPlace::takes(std::string_view fileName) const {
    return fileName.size() >= ending.size() && fileName.substr(fileName.size() - ending.size()) == ending;
}
