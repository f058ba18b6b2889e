#include <trovek-ui/elided_label.h>

#include <QPainter>
#include <QTest>

using trovek::ElidedLabel;

namespace {

/** Draws its text and nothing else. */
class Line : public QWidget
{
public:
    explicit Line(const QString& text)
        : m_text(text)
    {}

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter(this).drawText(0, fontMetrics().ascent(), m_text);
    }

private:
    const QString m_text;
};

QImage picture(QWidget& widget)
{
    return widget.grab().toImage();
}

QImage picture(const ElidedLabel& like, const QString& text)
{
    Line line(text);
    line.resize(like.size());
    return picture(line);
}

} // namespace

class tst_ElidedLabel : public QObject
{
    Q_OBJECT

private slots:
    void takesAnyWidth();
    void drawsWhatFits();
    void endsWithAnEllipsisWhereItIsCut();
};

void tst_ElidedLabel::takesAnyWidth()
{
    const ElidedLabel label(QStringLiteral("a long line of text"));
    QCOMPARE(label.sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
    QCOMPARE(label.sizePolicy().verticalPolicy(), QSizePolicy::MinimumExpanding);
    QCOMPARE(label.sizeHint(), QSize(0, label.fontMetrics().height()));
    QCOMPARE(label.accessibleName(), QStringLiteral("a long line of text"));
}

void tst_ElidedLabel::drawsWhatFits()
{
    ElidedLabel label(QStringLiteral("a long line of text"));
    label.resize(400, 40);
    QCOMPARE(picture(label), picture(label, QStringLiteral("a long line of text")));
}

void tst_ElidedLabel::endsWithAnEllipsisWhereItIsCut()
{
    const QString text = QStringLiteral("a long line of text");
    ElidedLabel label(text);
    label.resize(60, 40);
    const QString elided = label.fontMetrics().elidedText(text, Qt::ElideRight, 60);
    QVERIFY(elided != text);
    QVERIFY(elided.endsWith(QChar(0x2026)));
    QCOMPARE(picture(label), picture(label, elided));
    label.resize(400, 40);
    QCOMPARE(picture(label), picture(label, text));
}

QTEST_MAIN(tst_ElidedLabel)
#include "tst_elided_label.moc"
