#pragma once

#include <QLabel>

namespace trovek {

/** The label of a field, with a star while the field does not hold its default. */
class FieldLabel : public QLabel
{
public:
    explicit FieldLabel(const QString& name, QWidget* parent = nullptr);

    /** The text without the star. */
    void setName(const QString& name);
    /** @param toolTip says what the default is; empty takes the star away */
    void setMark(const QString& toolTip);

    /** Leave room for the star, so that the form stays in place when it comes and goes. */
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    bool isMarked() const { return !toolTip().isEmpty(); }
    void showText();
    QSize withRoomForStar(QSize hint) const;

    QString m_name;
};

} // namespace trovek
