// Runs a fuzz target on files, or on all files of directories, with any compiler.
#include "MoFuzz.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace {

void replay(std::filesystem::path const& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    std::string const input(std::istreambuf_iterator<char>(in), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.data()), input.size());
}

} // namespace

int main(int argc, char** argv) {
    int files = 0;
    for (std::string const& path : std::vector<std::string>(argv + 1, argv + argc)) {
        if (!std::filesystem::is_directory(path)) {
            replay(path);
            ++files;
            continue;
        }
        for (auto const& entry : std::filesystem::directory_iterator(path)) {
            replay(entry.path());
            ++files;
        }
    }
    std::cout << files << " inputs, no findings" << std::endl;
    return files == 0;
}
