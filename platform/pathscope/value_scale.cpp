#include "pathscope/value_scale.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace pathscope {

namespace {

/** Keeps sums of quanta far from overflow. */
constexpr double kMostQuanta = 1e15;

bool isSortable(double value)
{
    return std::isfinite(value) && value >= 0;
}

/** The least of 1, 2, 5, 10, 20, ... by which a span has few enough classes. */
std::int64_t roundStep(std::int64_t least, std::int64_t most, int mostClasses)
{
    const auto classes = [least, most](std::int64_t step) {
        return (most + step - 1) / step - least / step;
    };
    for (std::int64_t power = 1;; power *= 10) {
        for (const std::int64_t step : {power, power * 2, power * 5}) {
            if (classes(step) <= mostClasses)
                return step;
        }
    }
}

} // namespace

ValueScale::ValueScale(const std::vector<double>& values, double quantum, double most)
    : m_quantum(quantum)
{
    Quanta least = 0;
    Quanta greatest = 0;
    bool any = false;
    for (const double value : values) {
        if (!isSortable(value))
            continue;
        const Quanta quanta = quantaOf(value);
        least = any ? std::min(least, quanta) : quanta;
        greatest = any ? std::max(greatest, quanta) : quanta;
        any = true;
        // One more than fits says that there are too many; the rest need not be kept.
        const auto place = std::lower_bound(m_distinct.begin(), m_distinct.end(), quanta);
        if (m_distinct.size() <= kMostClasses && (place == m_distinct.end() || *place != quanta))
            m_distinct.insert(place, quanta);
    }
    if (m_distinct.size() <= kMostClasses) {
        m_count = static_cast<int>(m_distinct.size());
        return;
    }

    m_distinct.clear();
    m_openEnd = most >= 0 && quantaOf(most) > least && quantaOf(most) < greatest;
    const Quanta end = m_openEnd ? quantaOf(most) : greatest;
    m_step = roundStep(least, end, m_openEnd ? kMostClasses - 1 : kMostClasses);
    m_least = least / m_step * m_step;
    m_count = static_cast<int>((end - m_least + m_step - 1) / m_step) + (m_openEnd ? 1 : 0);
}

int ValueScale::count() const
{
    return m_count;
}

int ValueScale::classOf(double value) const
{
    if (m_count == 0 || !isSortable(value))
        return 0;
    const Quanta quanta = quantaOf(value);
    if (!m_distinct.empty()) {
        const auto place = std::lower_bound(m_distinct.begin(), m_distinct.end(), quanta);
        return std::min(static_cast<int>(place - m_distinct.begin()), m_count - 1);
    }
    const Quanta above = std::max<Quanta>(quanta - m_least, 0);
    return static_cast<int>(std::min<Quanta>(above / m_step, m_count - 1));
}

QString ValueScale::nameOf(int classIndex, const QString& unit) const
{
    if (!m_distinct.empty()) {
        return QCoreApplication::translate("pathscope::ToolpathScene", "%1 %2")
            .arg(numberOf(m_distinct[static_cast<std::size_t>(classIndex)]), unit);
    }
    const Quanta from = m_least + classIndex * m_step;
    if (m_openEnd && classIndex == m_count - 1) {
        return QCoreApplication::translate("pathscope::ToolpathScene", "more than %1 %2")
            .arg(numberOf(from), unit);
    }
    return QCoreApplication::translate("pathscope::ToolpathScene", "%1 to %2 %3")
        .arg(numberOf(from), numberOf(from + m_step), unit);
}

ValueScale::Quanta ValueScale::quantaOf(double value) const
{
    return static_cast<Quanta>(std::llround(std::min(value / m_quantum, kMostQuanta)));
}

QString ValueScale::numberOf(Quanta quanta) const
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    const double value = static_cast<double>(quanta) * m_quantum;
    // Shortest digits: 0.2, not 0.20, and no trace of binary fractions.
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(m_quantum) - 1e-9)));
    QString text = locale.toString(value, 'f', decimals);
    if (decimals > 0) {
        while (text.endsWith(locale.zeroDigit()))
            text.chop(1);
        if (text.endsWith(locale.decimalPoint()))
            text.chop(1);
    }
    return text;
}

} // namespace pathscope
