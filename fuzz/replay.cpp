#include "fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector<std::filesystem::path> filesIn(const char* folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

/** Runs the target once with every file of the folder that is named. */
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    try {
        const std::vector<std::filesystem::path> files = filesIn(argv[1]);
        for (const std::filesystem::path& path : files) {
            // On standard error, so that it is known when the next input ends the program.
            std::fprintf(stderr, "%s\n", path.string().c_str());
            replay(path);
        }
        return files.empty() ? 1 : 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "Thrown: %s\n", error.what());
        return 1;
    }
}
