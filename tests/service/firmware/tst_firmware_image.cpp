#include "catalogue_folder.h"
#include "support/thrown_text.h"

#include <service/firmware/firmware_image.h>

#include <QTest>

using namespace trovek;
using namespace trovek::service;

class tst_FirmwareImage : public QObject
{
    Q_OBJECT

private slots:
    void tellsMachineAndVersion_data();
    void tellsMachineAndVersion();
    void refusesWhatIsNone_data();
    void refusesWhatIsNone();
    void theHashIsTextInSmallLetters();
};

void tst_FirmwareImage::tellsMachineAndVersion_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("version");

    QTest::newRow("the first type")
        << firmwareImage(Printer::FabrinoSingle, 6, 2) << 1 << QByteArray("6.2");
    QTest::newRow("the last type")
        << firmwareImage(Printer::CubioDual, 4, 10) << 6 << QByteArray("4.10");
    QTest::newRow("the greatest numbers")
        << firmwareImage(Printer::Fabrino2, 65535, 65535) << 3 << QByteArray("65535.65535");
    QTest::newRow("nothing behind the header")
        << firmwareImage(Printer::Fabrino2, 0, 0, 0) << 3 << QByteArray("0.0");
}

void tst_FirmwareImage::tellsMachineAndVersion()
{
    QFETCH(QByteArray, image);
    QFETCH(int, type);
    QFETCH(QByteArray, version);

    const FirmwareHeader header = readFirmwareHeader(image);

    QCOMPARE(int(header.type), type);
    QCOMPARE(header.version.str(), version.toStdString());
    QVERIFY(header.version.valid());
}

void tst_FirmwareImage::refusesWhatIsNone_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray good = firmwareImage(Printer::Fabrino2, 7, 6);
    const auto with = [&good](int offset, char byte) {
        QByteArray image = good;
        image[offset] = byte;
        return image;
    };
    const QByteArray none("is no firmware");
    const QByteArray incomplete("is not complete");
    const QByteArray unknownType("is for a type of machine that this version does not know");
    QTest::newRow("empty") << QByteArray() << none;
    QTest::newRow("garbage") << QByteArray(100, 'x') << none;
    QTest::newRow("a page of a site") << QByteArray("<html><body>Sign in</body></html>") << none;
    QTest::newRow("half a header") << good.left(15) << none;
    QTest::newRow("another mark") << with(3, 'X') << none;
    QTest::newRow("an empty one, cut in its header")
        << firmwareImage(Printer::Fabrino2, 7, 6, 0).left(15) << none;
    QTest::newRow("a byte too few") << good.left(good.size() - 1) << incomplete;
    QTest::newRow("a byte too many") << good + 'x' << incomplete;
    QTest::newRow("only the header") << good.left(16) << incomplete;
    QTest::newRow("a later form") << with(4, 2)
                                  << QByteArray(
                                         "is firmware in a form that this version does not know");
    QTest::newRow("type 0") << with(5, 0) << unknownType;
    QTest::newRow("type 7") << with(5, 7) << unknownType;
    QTest::newRow("type 255") << with(5, '\xff') << unknownType;
}

void tst_FirmwareImage::refusesWhatIsNone()
{
    QFETCH(QByteArray, image);
    QFETCH(QByteArray, expected);
    QCOMPARE(thrownText([&] { readFirmwareHeader(image); }), expected.toStdString());
}

void tst_FirmwareImage::theHashIsTextInSmallLetters()
{
    QCOMPARE(firmwareHash("abc"),
             QByteArray("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
}

QTEST_GUILESS_MAIN(tst_FirmwareImage)
#include "tst_firmware_image.moc"
