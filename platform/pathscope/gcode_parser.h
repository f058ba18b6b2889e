#pragma once

#include "pathscope/toolpaths.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace pathscope {

struct ParseOptions
{
    /** Of filament; turns millimetres of filament into a width where the file tells none. */
    double filamentDiameter = 1.75;
    /** How much is read at a time; decides about memory, not about the result. */
    std::size_t blockBytes = 256 * 1024;
    /** Set from any thread to stop early; the result then is not complete. May be null. */
    const std::atomic<bool>* canceled = nullptr;
    /** Called from the parsing thread with 0 to 1, rising, at most some hundred times. */
    std::function<void(double)> progress;
    /**
     * Called from the parsing thread with what stands so far, a few times for a large file: first
     * early, then ever more rarely, so that copying the tables costs next to nothing.
     */
    std::function<void(std::shared_ptr<const Toolpaths>)> piece;
};

/**
 * Reads G-code: RepRap and Marlin dialects, with the comments of common slicers.
 *
 * Any text is taken: what makes no sense is skipped and counted. No exception but
 * std::bad_alloc.
 */
std::shared_ptr<const Toolpaths> parseGCode(std::string_view text,
                                            const ParseOptions& options = {});

/**
 * The same from a file, in blocks, without holding its text.
 *
 * @param path UTF-8
 * @throws std::runtime_error with a text for the user when the file cannot be read
 */
std::shared_ptr<const Toolpaths> parseGCodeFile(const std::string& path,
                                                const ParseOptions& options = {});

} // namespace pathscope
