#pragma once

#include <string>

/**
 * The path of a sliced file of the test set: "small", "medium", "dual", "large" or "huge"; with
 * ".stl" behind it its mesh.
 *
 * They lie in the folder that TROVEK_BENCH_DATA names, else in build/testset of the source tree.
 * What is missing is made by bench/make_testset.py, which takes a minute.
 *
 * @return empty when it cannot be made, as without a slicer
 */
std::string benchFile(const std::string& name);
