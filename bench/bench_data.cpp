#include "bench_data.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

std::string benchFile(const std::string& name)
{
    namespace fs = std::filesystem;
    const fs::path source = TROVEK_SOURCE_DIR;
    const char* const chosen = std::getenv("TROVEK_BENCH_DATA");
    const fs::path folder = chosen != nullptr ? fs::path(chosen) : source / "build/testset";
    const fs::path file = folder / (name.find('.') == std::string::npos ? name + ".gcode" : name);
    if (fs::exists(file))
        return file.string();
    std::fprintf(stderr, "Making %s\n", file.string().c_str());
    const std::string command = "python3 \"" + (source / "bench/make_testset.py").string() +
                                "\" \"" + folder.string() + "\" " + name;
    return std::system(command.c_str()) == 0 && fs::exists(file) ? file.string() : std::string();
}
