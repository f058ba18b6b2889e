#pragma once

#include <map>
#include <string>

/**
 * Runs the registered benchmarks and prints a table: time, ratio to the baseline, counters, goal.
 *
 * @param baselines from a benchmark's full name, such as "fill/1000", to that of the one it is
 *                  compared with; the baseline has to be registered before it
 * @return the program's exit status
 */
int runWithBaselines(int argc, char** argv, std::map<std::string, std::string> baselines);
