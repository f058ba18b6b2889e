#pragma once

#include "geometry_error.h"

#include <algorithm>

namespace trovek::geometry {

/** One of the steps of an operation, told as its part of the whole. */
class ProgressPart
{
public:
    /** @param progress not owned; must outlive the part */
    explicit ProgressPart(const Progress& progress, double begin = 0, double end = 1)
        : m_progress(progress)
        , m_begin(begin)
        , m_end(end)
    {}

    ProgressPart part(double begin, double end) const
    {
        return ProgressPart(m_progress, at(begin), at(end));
    }

    /** @param done of this part, 0 to 1. @throws Canceled */
    void report(double done) const
    {
        if (m_progress && !m_progress(at(std::clamp(done, 0.0, 1.0))))
            throw Canceled();
    }

    /**
     * As CGAL asks: it never answers false, but throws. No std::function, of which CGAL 5.5 would
     * keep a reference to a copy that is gone.
     */
    auto callback() const
    {
        return [part = *this](double done) {
            part.report(done);
            return true;
        };
    }

private:
    double at(double done) const { return m_begin + done * (m_end - m_begin); }

    const Progress& m_progress;
    double m_begin;
    double m_end;
};

} // namespace trovek::geometry
