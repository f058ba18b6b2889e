#include "support/modal_driver.h"
#include "support/test_log.h"

#include "src/make_dialog/length_validator.h"

#include <QTest>

using namespace trovek;

namespace {

using Action = FileChooserValidator::Action;

/** A file name of that many characters, the suffix with its dot included. */
QString nameOf(int length, const QString& suffix)
{
    return QString(length - suffix.size(), QLatin1Char('n')) + suffix;
}

QStringList question(const QString& proposal)
{
    return {QStringLiteral("This filename is too long to show on your Orvane"),
            QStringLiteral("To view this file on your Orvane you must use a file name no longer "
                           "than 30 characters. Shorten the name to \"%1\"?")
                .arg(proposal)};
}

} // namespace

class tst_LengthValidator : public QObject
{
    Q_OBJECT

private slots:
    void acceptsWhatTheMachineCanShow_data();
    void acceptsWhatTheMachineCanShow();
    void proposesAShorterName_data();
    void proposesAShorterName();
    void rejectsWhatTheUserDoesNotWantShortened_data();
    void rejectsWhatTheUserDoesNotWantShortened();
};

void tst_LengthValidator::acceptsWhatTheMachineCanShow_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("short") << QStringLiteral("a.x3g");
    QTest::newRow("x3g of 30") << nameOf(30, QStringLiteral(".x3g"));
    QTest::newRow("s3g of 30") << nameOf(30, QStringLiteral(".s3g"));
    QTest::newRow("gcode of 31") << nameOf(31, QStringLiteral(".gcode"));
    QTest::newRow("gcode of 200") << nameOf(200, QStringLiteral(".gcode"));
    QTest::newRow("long folder") << QString(60, QLatin1Char('f')) + QStringLiteral("/a.x3g");
}

void tst_LengthValidator::acceptsWhatTheMachineCanShow()
{
    TestLog log;
    QFETCH(QString, name);
    ModalDriver driver;
    LengthValidator validator;
    const QString path = QStringLiteral("/folder/") + name;

    const FileChooserValidator::Result result = validator.validate(path, nullptr);

    QCOMPARE(result.action, int(Action::Accept));
    QCOMPARE(result.path, path);
}

void tst_LengthValidator::proposesAShorterName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("proposal");

    QTest::newRow("x3g of 31") << nameOf(31, QStringLiteral(".x3g"))
                               << nameOf(30, QStringLiteral(".x3g"));
    QTest::newRow("s3g of 31") << nameOf(31, QStringLiteral(".s3g"))
                               << nameOf(30, QStringLiteral(".s3g"));
    QTest::newRow("far longer") << nameOf(250, QStringLiteral(".x3g"))
                                << nameOf(30, QStringLiteral(".x3g"));
    QTest::newRow("upper case") << nameOf(31, QStringLiteral(".X3G"))
                                << nameOf(30, QStringLiteral(".X3G"));
    QTest::newRow("dots in the name") << nameOf(40, QStringLiteral(".v1.2.x3g"))
                                      << nameOf(26, QString()) + QStringLiteral(".x3g");
    QTest::newRow("no dot at all")
        << nameOf(31, QStringLiteral("x3g")) << nameOf(26, QString()) + QStringLiteral(".x3g");
    QTest::newRow("cut inside a pair")
        << nameOf(25, QString()) + QString::fromUtf8("\xf0\x9f\xa6\x86\xf0\x9f\xa6\x86.x3g")
        << nameOf(25, QString()) + QStringLiteral(".x3g");
    QTest::newRow("a place to be filled")
        << QStringLiteral("%1%2") + nameOf(31, QStringLiteral(".x3g"))
        << QStringLiteral("%1%2") + nameOf(26, QStringLiteral(".x3g"));
}

void tst_LengthValidator::proposesAShorterName()
{
    TestLog log;
    QFETCH(QString, name);
    QFETCH(QString, proposal);
    QVERIFY(proposal.size() <= 30);
    QWidget parent;
    ModalDriver driver;
    driver.expectMessage(question(proposal), QStringLiteral("&Save"));
    LengthValidator validator;

    const FileChooserValidator::Result result =
        validator.validate(QStringLiteral("/folder/inner/") + name, &parent);

    QCOMPARE(result.action, int(Action::Replace));
    QCOMPARE(result.path, QStringLiteral("/folder/inner/") + proposal);
}

void tst_LengthValidator::rejectsWhatTheUserDoesNotWantShortened_data()
{
    QTest::addColumn<bool>("escape");

    QTest::newRow("cancel") << false;
    QTest::newRow("escape") << true;
}

void tst_LengthValidator::rejectsWhatTheUserDoesNotWantShortened()
{
    TestLog log;
    QFETCH(bool, escape);
    QWidget parent;
    ModalDriver driver;
    driver.expect([escape](QDialog* box) {
        if (escape)
            QTest::keyClick(box, Qt::Key_Escape);
        else
            pressButton(box, QStringLiteral("&Cancel"));
    });
    LengthValidator validator;
    const QString path = QStringLiteral("/folder/") + nameOf(31, QStringLiteral(".x3g"));

    const FileChooserValidator::Result result = validator.validate(path, &parent);

    QCOMPARE(result.action, int(Action::Reject));
    QCOMPARE(result.path, path);
}

QTEST_MAIN(tst_LengthValidator)
#include "tst_length_validator.moc"
