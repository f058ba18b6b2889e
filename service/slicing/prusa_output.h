#pragma once

#include <QByteArray>
#include <QString>

#include <string>

namespace trovek::service {

struct SliceJob;

/**
 * What prusa-slicer writes while it works: "20 => Generating perimeters", and what it complains of.
 *
 * Its percentages go back and forth and stand still for minutes. The percentage here never falls;
 * it creeps towards the next one that may come, without reaching it.
 */
class PrusaOutput
{
public:
    /** @param bytes cut anywhere; `now` in seconds, never falling */
    void add(const QByteArray& bytes, double now);

    /** 0 to 99. */
    int percent(double now) const;
    /** For a user. */
    QString stage() const { return m_stage; }

    /** The last of what was no progress, a line each; bounded. */
    const QByteArray& complaints() const { return m_complaints; }

private:
    void takeLine(QByteArray line, double now);

    QByteArray m_rest;
    QByteArray m_complaints;
    QString m_stage = QStringLiteral("Slicing");
    double m_percent = 0;
    double m_since = 0;
};

/**
 * Why it failed, for a user.
 * @param signalNumber that killed it; 0 when it ended with a status
 */
std::string prusaFailure(const SliceJob& job, const QByteArray& complaints, int signalNumber);

} // namespace trovek::service
