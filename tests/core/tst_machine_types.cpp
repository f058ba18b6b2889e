#include "support/test_log.h"

#include <trovek-ui/machine_types.h>

#include <QTest>

#include <stdexcept>
#include <string>

using namespace trovek;

namespace {

Printer::Type type(int value)
{
    return static_cast<Printer::Type>(value);
}

/** What the call throws as std::runtime_error; empty when it does not. */
template <typename Call>
std::string thrownBy(Call call)
{
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

} // namespace

class tst_MachineTypes : public QObject
{
    Q_OBJECT

private slots:
    void namesEveryType_data();
    void namesEveryType();
    void namesOtherTypesBot_data();
    void namesOtherTypesBot();
    void namesBotInAnotherContext();
    void refusesAnotherIdentifier_data();
    void refusesAnotherIdentifier();
    void sharesPicturesInAFamily_data();
    void sharesPicturesInAFamily();
    void hasThreeStatesInItsIcon_data();
    void hasThreeStatesInItsIcon();
    void namesSlicers_data();
    void namesSlicers();
    void convertsTheOneSlicerIdentifier();
    void refusesAnotherSlicerIdentifier_data();
    void refusesAnotherSlicerIdentifier();
};

void tst_MachineTypes::namesEveryType_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("withBrand");
    QTest::addColumn<QString>("inSentence");

    const auto row = [](const char* identifier, int value, const char* brand,
                        const char* sentence) {
        QTest::newRow(identifier) << value << QString::fromLatin1(identifier)
                                  << QString::fromLatin1(brand) << QString::fromLatin1(sentence);
    };
    row("fabrino_single", 1, "Orvane Fabrino", "The Fabrino");
    row("fabrino_dual", 2, "Orvane Fabrino (Dual)", "The Fabrino (Dual)");
    row("fabrino_2", 3, "Orvane Fabrino 2", "The Fabrino 2");
    row("fabrino_2x", 4, "Orvane Fabrino 2X", "The Fabrino 2X");
    row("cubio_single", 5, "Orvane Cubio", "Cubio");
    row("cubio_dual", 6, "Orvane Cubio (Dual)", "Cubio (Dual)");
}

void tst_MachineTypes::namesEveryType()
{
    TestLog log;
    QFETCH(int, value);
    QFETCH(QString, identifier);

    QCOMPARE(printerTypeToIdentifier(type(value)), identifier);
    QCOMPARE(int(printerTypeFromIdentifier(identifier)), value);
    QTEST(printerTypeToHumanString(type(value), PrinterStringWithBrand), "withBrand");
    QTEST(printerTypeToHumanString(type(value), PrinterStringInSentence), "inSentence");
}

void tst_MachineTypes::namesOtherTypesBot_data()
{
    QTest::addColumn<int>("value");

    QTest::newRow("unknown") << 0;
    QTest::newRow("one past the last") << 7;
    QTest::newRow("negative") << -1;
    QTest::newRow("far out") << 1000;
}

void tst_MachineTypes::namesOtherTypesBot()
{
    TestLog log;
    QFETCH(int, value);

    QCOMPARE(printerTypeToHumanString(type(value), PrinterStringWithBrand), QStringLiteral("bot"));
    QCOMPARE(printerTypeToHumanString(type(value), PrinterStringInSentence), QStringLiteral("bot"));
    QCOMPARE(thrownBy([&] { printerTypeToIdentifier(type(value)); }),
             std::string("Invalid machine type"));
    // It still has a picture.
    QCOMPARE(printerTypeToPixmap(type(value)).toImage(),
             QPixmap(QStringLiteral(":/printers/printer_generic_up.png")).toImage());
}

void tst_MachineTypes::namesBotInAnotherContext()
{
    TestLog log;
    for (int value = 0; value <= 7; ++value) {
        QCOMPARE(printerTypeToHumanString(type(value), static_cast<PrinterStringContext>(2)),
                 QStringLiteral("bot"));
        QCOMPARE(printerTypeToHumanString(type(value), static_cast<PrinterStringContext>(-1)),
                 QStringLiteral("bot"));
    }
}

void tst_MachineTypes::refusesAnotherIdentifier_data()
{
    QTest::addColumn<QString>("identifier");

    QTest::newRow("upper case") << QStringLiteral("Fabrino_2");
    QTest::newRow("empty") << QString();
    QTest::newRow("blank after it") << QStringLiteral("fabrino_2 ");
    QTest::newRow("beginning of one") << QStringLiteral("fabrino");
    QTest::newRow("human name") << QStringLiteral("The Fabrino 2");
    QTest::newRow("not ASCII") << QStringLiteral(u"fabrino_\u00fc");
}

void tst_MachineTypes::refusesAnotherIdentifier()
{
    TestLog log;
    QFETCH(QString, identifier);

    QCOMPARE(QString::fromStdString(thrownBy([&] { printerTypeFromIdentifier(identifier); })),
             QStringLiteral("Invalid machine type identifier:\n") + identifier);
}

void tst_MachineTypes::sharesPicturesInAFamily_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("base");

    QTest::newRow("unknown") << 0 << QStringLiteral("generic");
    QTest::newRow("fabrino_single") << 1 << QStringLiteral("fabrino");
    QTest::newRow("fabrino_dual") << 2 << QStringLiteral("fabrino");
    QTest::newRow("fabrino_2") << 3 << QStringLiteral("fabrino_2");
    QTest::newRow("fabrino_2x") << 4 << QStringLiteral("fabrino_2x");
    QTest::newRow("cubio_single") << 5 << QStringLiteral("cbo");
    QTest::newRow("cubio_dual") << 6 << QStringLiteral("cbo");
    QTest::newRow("one past the last") << 7 << QStringLiteral("generic");
}

void tst_MachineTypes::sharesPicturesInAFamily()
{
    TestLog log;
    QFETCH(int, value);
    QFETCH(QString, base);

    const QPixmap expected(QStringLiteral(":/printers/printer_%1_up.png").arg(base));
    QVERIFY(!expected.isNull());
    QCOMPARE(printerTypeToPixmap(type(value)).toImage(), expected.toImage());
}

void tst_MachineTypes::hasThreeStatesInItsIcon_data()
{
    sharesPicturesInAFamily_data();
}

void tst_MachineTypes::hasThreeStatesInItsIcon()
{
    TestLog log;
    QFETCH(int, value);
    QFETCH(QString, base);

    const QIcon icon = printerTypeToIcon(type(value));
    const auto picture = [&base](const char* state) {
        return QPixmap(
            QStringLiteral(":/printers/printer_%1_%2.png").arg(base, QString::fromLatin1(state)));
    };
    const QPixmap up = picture("up");
    QCOMPARE(icon.pixmap(up.size(), QIcon::Normal).toImage(), up.toImage());
    QCOMPARE(icon.pixmap(up.size(), QIcon::Active).toImage(), picture("over").toImage());
    QCOMPARE(icon.pixmap(up.size(), QIcon::Selected).toImage(), picture("down").toImage());
    QVERIFY(picture("over").toImage() != up.toImage());
    QVERIFY(picture("down").toImage() != up.toImage());
}

void tst_MachineTypes::namesSlicers_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("name");

    QTest::newRow("strandel") << 0 << QStringLiteral("Orvane Slicer");
    QTest::newRow("unknown") << 1 << QStringLiteral("Unknown Slicer");
    QTest::newRow("one past the last") << 2 << QStringLiteral("Invalid Slicer");
    QTest::newRow("negative") << -1 << QStringLiteral("Invalid Slicer");
}

void tst_MachineTypes::namesSlicers()
{
    TestLog log;
    QFETCH(int, value);

    QTEST(slicerToHumanString(static_cast<SlicerConfiguration::Slicer>(value)), "name");
}

void tst_MachineTypes::convertsTheOneSlicerIdentifier()
{
    TestLog log;
    QCOMPARE(slicerToIdentifier(SlicerConfiguration::Strandel), QStringLiteral("strandel"));
    QCOMPARE(int(slicerFromIdentifier(QStringLiteral("strandel"))),
             int(SlicerConfiguration::Strandel));
    for (const int value : {-1, 1, 2}) {
        QCOMPARE(
            thrownBy([&] { slicerToIdentifier(static_cast<SlicerConfiguration::Slicer>(value)); }),
            std::string("Invalid slicer"));
    }
}

void tst_MachineTypes::refusesAnotherSlicerIdentifier_data()
{
    QTest::addColumn<QString>("identifier");

    QTest::newRow("upper case") << QStringLiteral("Strandel");
    QTest::newRow("empty") << QString();
    QTest::newRow("human name") << QStringLiteral("Orvane Slicer");
}

void tst_MachineTypes::refusesAnotherSlicerIdentifier()
{
    TestLog log;
    QFETCH(QString, identifier);

    QCOMPARE(QString::fromStdString(thrownBy([&] { slicerFromIdentifier(identifier); })),
             QStringLiteral("Invalid slicer identifier\n") + identifier);
}

QTEST_MAIN(tst_MachineTypes)
#include "tst_machine_types.moc"
