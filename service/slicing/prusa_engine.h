#pragma once

#include "slicing/slicer_engine.h"

namespace trovek::service {

/** Slices with an installed prusa-slicer, as a child process. */
class PrusaEngine : public SlicerEngine
{
public:
    /** @param program a name, looked for on the PATH at every slice, or an absolute path */
    explicit PrusaEngine(QString program = QStringLiteral("prusa-slicer"));

    std::string name() const override;
    void slice(const SliceJob& job, Control& control) const override;

private:
    const QString m_program;
};

} // namespace trovek::service
