#include "fuzz_target.h"

#include <slicing/prusa_output.h>
#include <slicing/sliced_file.h>

#include <QBuffer>
#include <QByteArray>

#include <cmath>
#include <stdexcept>

using namespace trovek::service;

namespace {

void tell(const QByteArray& bytes)
{
    PrusaOutput output;
    int last = 0;
    double now = 0;
    // Pieces of odd lengths, as they come through a pipe.
    for (int at = 0; at < bytes.size(); at += 7) {
        output.add(bytes.mid(at, 7), now);
        const int percent = output.percent(now);
        fuzz::require(percent >= last && percent <= 99, "progress never falls and never ends");
        last = percent;
        now += 3;
    }
    fuzz::require(!output.stage().isEmpty(), "there is always a stage");
}

void read(QByteArray bytes)
{
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
    try {
        const SlicedFile sliced = readSlicedFile(file);
        fuzz::require(sliced.usesTool[0] || sliced.usesTool[1],
                      "something is printed by some tool");
        for (const AxisRange& axis : sliced.reach)
            fuzz::require(!std::isnan(axis.min) && !std::isnan(axis.max), "places are numbers");
    } catch (const std::runtime_error&) {
    }
}

} // namespace

/** What a slicer says, or what it has written. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    tell(bytes);
    read(bytes);
    return 0;
}
