#include "support/test_log.h"

#include <service/state_file.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace trovek;
using namespace trovek::service;

namespace {

struct Fixture
{
    QString path(const QString& name) const { return folder.filePath(name); }
    QStringList files() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    QByteArray read(const QString& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }

    TestLog log;
    QTemporaryDir folder;
};

const QString kName = QStringLiteral("memory.bin");

} // namespace

class tst_StateFile : public QObject
{
    Q_OBJECT

private slots:
    void replacesAFile_data();
    void replacesAFile();
    void readsWhatItWrote();
    void aKillLeavesNothingForLong();
    void leavesFilesOfOthersAlone();
    void whatCannotBeWrittenLeavesTheEarlierFile();
    void saysWhyItCannotBeWritten();
};

void tst_StateFile::replacesAFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("longer") << kName << QByteArray("a") << QByteArray("bcd");
    QTest::newRow("shorter") << kName << QByteArray("abcdef") << QByteArray("b");
    QTest::newRow("empty") << kName << QByteArray("abcdef") << QByteArray();
    QTest::newRow("zeros") << kName << QByteArray("a") << QByteArray(5, '\0');
    QTest::newRow("a name in another language")
        << QStringLiteral("M\u00e4rz \u5370\u5237.bin") << QByteArray("a") << QByteArray("b");
}

void tst_StateFile::replacesAFile()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    Fixture f;
    QVERIFY(writeStateBytes(f.path(name), before));
    QCOMPARE(f.read(name), before);

    QVERIFY(writeStateBytes(f.path(name), after));

    QCOMPARE(f.read(name), after);
    QCOMPARE(f.files(), QStringList(name));
}

void tst_StateFile::readsWhatItWrote()
{
    Fixture f;
    Json::Value value(Json::objectValue);
    value["name"] = "\xc3\xa4";
    value["numbers"].append(1);
    QVERIFY(readStateFile(f.path(kName)).isNull());

    QVERIFY(writeStateFile(f.path(kName), value));

    QVERIFY(readStateFile(f.path(kName)) == value);
}

void tst_StateFile::aKillLeavesNothingForLong()
{
    Fixture f;
    f.put(QStringLiteral("unfinished"), "half of another file that was longer than this one");

    QVERIFY(writeStateBytes(f.path(kName), "new"));

    QCOMPARE(f.files(), QStringList(kName));
    QCOMPARE(f.read(kName), QByteArray("new"));
}

void tst_StateFile::leavesFilesOfOthersAlone()
{
    Fixture f;
    const QStringList names = {kName, QStringLiteral("memory.bin.backup"),
                               QStringLiteral("memory.bin.aBcDeF"), QStringLiteral("memory.bin~")};
    for (const QString& name : names)
        f.put(name, name.toUtf8());

    QVERIFY(writeStateBytes(f.path(kName), "new"));

    QCOMPARE(f.files().size(), names.size());
    for (const QString& name : names.mid(1))
        QCOMPARE(f.read(name), name.toUtf8());
}

void tst_StateFile::whatCannotBeWrittenLeavesTheEarlierFile()
{
    Fixture f;
    QVERIFY(writeStateBytes(f.path(kName), "earlier"));
    // A folder is in the way of the new file.
    QVERIFY(QDir(f.folder.path()).mkdir(QStringLiteral("unfinished")));
    f.log.expectError("Cannot write " + f.path(kName).toStdString() + ": ");

    QVERIFY(!writeStateBytes(f.path(kName), "new"));

    QCOMPARE(f.read(kName), QByteArray("earlier"));
}

void tst_StateFile::saysWhyItCannotBeWritten()
{
    Fixture f;
    // A folder stands where the file belongs.
    QVERIFY(QDir(f.folder.path()).mkdir(kName));
    f.log.expectError("Cannot write " + f.path(kName).toStdString() + ": Is a directory");
    QVERIFY(!writeStateBytes(f.path(kName), "new"));
    QVERIFY(f.files().isEmpty());

    const QString nowhere = f.path(QStringLiteral("no/where"));
    f.log.expectError("Cannot write " + nowhere.toStdString() + ": No such file or directory");
    QVERIFY(!writeStateBytes(nowhere, "new"));
}

QTEST_GUILESS_MAIN(tst_StateFile)
#include "tst_state_file.moc"
