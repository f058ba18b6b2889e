#include "support/thrown_text.h"
#include "test_models.h"

#include <service/slicing/zip_archive.h>

#include <QBuffer>
#include <QTest>

#include <string>

using namespace trovek;
using namespace trovek::service;

/** What is read of an archive that somebody has damaged or made to do harm. */
class tst_ZipArchive : public QObject
{
    Q_OBJECT

private slots:
    void isNoneWhenItIsCutAnywhere();
    void survivesAnyWrongByte();
    void unpacksNoMoreThanItTells();
    void refusesWhatStandsBehindAPackedFile();
};

namespace {

/** One file, deflated, with something behind it; says nothing true of its size. */
QByteArray packedZip(const QByteArray& bytes, const QByteArray& behind)
{
    // Without the length, the header and the sum that stand around it.
    QByteArray packed = qCompress(bytes).mid(6);
    packed.chop(4);
    return withNumber(zipOf({{"a.amf", packed + behind}}), 10, 8, 2);
}

std::string textOfReading(QByteArray archive, qint64* taken)
{
    QBuffer buffer(&archive);
    buffer.open(QIODevice::ReadOnly);
    ZipReader reader(buffer);
    *taken = 0;
    return thrownText([&] {
        reader.read(reader.entries().front(),
                    [taken](const char*, qint64 size) { *taken += size; });
    });
}

} // namespace

void tst_ZipArchive::isNoneWhenItIsCutAnywhere()
{
    const QByteArray whole = Block().threeMf({{"Metadata/a.config", "<config/>"}});

    for (int size = 0; size < whole.size(); ++size) {
        const std::string text = thrownText([&] { filesOf(whole.left(size)); });
        QVERIFY2(text == "it is no archive" || text == "it is damaged", text.c_str());
    }
}

void tst_ZipArchive::survivesAnyWrongByte()
{
    const QByteArray whole = Block().threeMf({{"Metadata/a.config", "<config/>"}});
    const auto files = filesOf(whole);

    for (int at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\1', '\x7f', '\xff'}) {
            QByteArray damaged = whole;
            damaged[at] = byte;
            auto read = files;
            const std::string text = thrownText([&] { read = filesOf(damaged); });
            QVERIFY2(text == "nothing thrown" || text.rfind("it is ", 0) == 0, text.c_str());
            // Whatever is read is what was written: each byte of it is summed up.
            for (std::size_t i = 0; i < read.size(); ++i)
                QCOMPARE(read[i].second, files[i].second);
        }
    }
}

void tst_ZipArchive::unpacksNoMoreThanItTells()
{
    const QByteArray bomb = packedZip(QByteArray(64 << 20, 'x'), QByteArray());
    QVERIFY(bomb.size() < (1 << 17));
    qint64 taken = 0;

    QCOMPARE(textOfReading(withNumber(bomb, 24, 1000), &taken), std::string("it is damaged"));

    QCOMPARE(taken, qint64(0));
}

void tst_ZipArchive::refusesWhatStandsBehindAPackedFile()
{
    const QByteArray text(1000, 'x');
    qint64 taken = 0;

    QCOMPARE(textOfReading(withNumber(packedZip(text, "more"), 24, 1000), &taken),
             std::string("it is damaged"));
    QCOMPARE(taken, qint64(1000));
}

QTEST_GUILESS_MAIN(tst_ZipArchive)
#include "tst_zip_archive.moc"
