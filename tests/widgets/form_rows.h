#pragma once

#include <trovek-ui/grama.h>

#include <QFormLayout>
#include <QFrame>
#include <QLabel>
#include <QStringList>

namespace trovek {

/** What stands in a form, from top to bottom, and what of it shows. */
class FormRows
{
public:
    explicit FormRows(const Grama& form)
        : m_layout(qobject_cast<QFormLayout*>(form.widget()->layout()))
    {}

    QFormLayout* layout() const { return m_layout; }

    /** The labels of all rows, and "--" for each line. */
    QStringList all() const
    {
        QStringList texts;
        for (int row = 0; row < m_layout->rowCount(); ++row)
            texts.append(isLine(row) ? QStringLiteral("--") : label(row));
        return texts;
    }

    /** Only those that are shown, or would be if the form were. */
    QStringList shown() const
    {
        QStringList texts;
        for (int row = 0; row < m_layout->rowCount(); ++row) {
            if (!leading(row)->isHidden())
                texts.append(isLine(row) ? QStringLiteral("--") : label(row));
        }
        return texts;
    }

    /** The lines that a walk through the whole form leaves, beside those that are there. */
    bool linesAreRight() const
    {
        bool rowShown = false;
        for (int row = 0; row < m_layout->rowCount(); ++row) {
            if (isLine(row)) {
                if (leading(row)->isHidden() == rowShown)
                    return false;
                rowShown = false;
            } else if (!leading(row)->isHidden()) {
                rowShown = true;
            }
        }
        return true;
    }

    /** True when each row's field is shown or hidden as its label is. */
    bool fieldsFollowLabels() const
    {
        for (int row = 0; row < m_layout->rowCount(); ++row) {
            if (!isLine(row) && field(row)->isHidden() != leading(row)->isHidden())
                return false;
        }
        return true;
    }

    bool isLine(int row) const
    {
        return m_layout->itemAt(row, QFormLayout::SpanningRole) != nullptr;
    }

    QFrame* line(int row) const { return qobject_cast<QFrame*>(leading(row)); }

    QWidget* field(int row) const
    {
        return m_layout->itemAt(row, QFormLayout::FieldRole)->widget();
    }

    QString label(int row) const
    {
        for (const QLabel* label : leading(row)->findChildren<QLabel*>())
            return label->text();
        return QString();
    }

    /** -1 when there is none. */
    int rowOf(const QString& label) const { return all().indexOf(label); }

private:
    /** The row's container of arrow and label, or its line. */
    QWidget* leading(int row) const
    {
        const auto role = isLine(row) ? QFormLayout::SpanningRole : QFormLayout::LabelRole;
        return m_layout->itemAt(row, role)->widget();
    }

    QFormLayout* const m_layout;
};

} // namespace trovek
