#pragma once

#include <QString>

#include <cstdint>
#include <vector>

namespace pathscope {

/**
 * Sorts numbers into at most eight classes that a legend can name: one a value where there are few
 * of them, else steps of a round number.
 */
class ValueScale
{
public:
    static constexpr int kMostClasses = 8;

    /**
     * @param values   what is to be sorted; numbers that are none, and below 0, are left out
     * @param quantum  how finely values are told apart, in their unit
     * @param most     what lies above shares the last class; below 0 for no such bound
     */
    ValueScale(const std::vector<double>& values, double quantum, double most = -1);

    int count() const;
    /** From 0; the nearest class for a value that lies outside. */
    int classOf(double value) const;
    /** "40 to 60 mm/s", "0.2 mm", or "more than 60 s" for a last class without an end. */
    QString nameOf(int classIndex, const QString& unit) const;

private:
    /** Counted in quanta; whole numbers, so that borders are exact. */
    using Quanta = std::int64_t;

    Quanta quantaOf(double value) const;
    QString numberOf(Quanta quanta) const;

    double m_quantum;
    /** Every value, or empty where steps are used. */
    std::vector<Quanta> m_distinct;
    Quanta m_least = 0;
    Quanta m_step = 1;
    int m_count = 0;
    bool m_openEnd = false;
};

} // namespace pathscope
