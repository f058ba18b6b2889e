#include "support/thrown_text.h"

#include <trovek/firmware_version.h>

#include <QTest>

using trovek::FirmwareVersion;

class tst_FirmwareVersion : public QObject
{
    Q_OBJECT

private slots:
    void readsMajorAndMinor_data();
    void readsMajorAndMinor();
    void theDefaultIsNotValid();
    void theDescriptionIsKept();
    void aSetIsInOrder();
};

void tst_FirmwareVersion::readsMajorAndMinor_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("majorNumber");
    QTest::addColumn<int>("minorNumber");

    QTest::newRow("usual") << QByteArray("7.2") << true << 7 << 2;
    QTest::newRow("two digits") << QByteArray("10.12") << true << 10 << 12;
    QTest::newRow("leading zero") << QByteArray("07.02") << true << 7 << 2;
    QTest::newRow("nine digits") << QByteArray("999999999.0") << true << 999999999 << 0;
    QTest::newRow("ten digits") << QByteArray("9999999999.0") << false << 0 << 0;
    QTest::newRow("empty") << QByteArray("") << false << 0 << 0;
    QTest::newRow("no point") << QByteArray("7") << false << 0 << 0;
    QTest::newRow("no minor") << QByteArray("7.") << false << 0 << 0;
    QTest::newRow("no major") << QByteArray(".2") << false << 0 << 0;
    QTest::newRow("three numbers") << QByteArray("7.2.1") << false << 0 << 0;
    QTest::newRow("letters behind") << QByteArray("7.2b") << false << 0 << 0;
    QTest::newRow("sign") << QByteArray("-7.2") << false << 0 << 0;
    QTest::newRow("blank") << QByteArray("7. 2") << false << 0 << 0;
}

void tst_FirmwareVersion::readsMajorAndMinor()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, valid);
    QFETCH(int, majorNumber);
    QFETCH(int, minorNumber);
    const FirmwareVersion version(text.toStdString());
    QCOMPARE(version.valid(), valid);
    QCOMPARE(version.major(), majorNumber);
    QCOMPARE(version.minor(), minorNumber);
    QCOMPARE(version.str(), text.toStdString());
}

void tst_FirmwareVersion::theDefaultIsNotValid()
{
    QVERIFY(!FirmwareVersion().valid());
    QCOMPARE(FirmwareVersion().str(), std::string());
}

void tst_FirmwareVersion::theDescriptionIsKept()
{
    const FirmwareVersion version("7.2", "Steadier.  Heating.");
    QCOMPARE(version.description(), std::string("Steadier.  Heating."));
    QCOMPARE(FirmwareVersion("7.2").description(), std::string());
}

void tst_FirmwareVersion::aSetIsInOrder()
{
    std::set<FirmwareVersion> versions;
    for (const char* const text : {"10.0", "7.10", "7.2", "odd", "07.2", "", "7.2"})
        versions.emplace(text, "about it");
    versions.emplace("7.2", "another description makes no other version");
    std::string order;
    for (const FirmwareVersion& version : versions)
        order += '[' + version.str() + ']';
    QCOMPARE(order, std::string("[][odd][07.2][7.2][7.10][10.0]"));
}

QTEST_GUILESS_MAIN(tst_FirmwareVersion)
#include "tst_firmware_version.moc"
