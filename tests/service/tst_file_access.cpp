#include "support/test_file.h"

#include <gcode/file_access.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace trovek;
using namespace trovek::service;

namespace {

template <typename Open>
QString thrownBy(Open open, const QString& path)
{
    try {
        open(path.toStdString());
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("nothing");
}

} // namespace

class tst_FileAccess : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void readsARegularFile();
    void writesAnExistingFile();
    void takesPathsThatAreNotAscii();
    void neverMakesAFile();
    void refusesAPathThatIsNotAbsolute_data();
    void refusesAPathThatIsNotAbsolute();
    void refusesAFolder();
    void readsAFileFromItsBeginningAgain();
    void reportsAFileThatCannotBeRead();
    void leavesTheFileOpenForItsOwnerAlone();
#ifdef Q_OS_UNIX
    void readsThroughALinkButNeverWritesThroughOne();
    void refusesAFolderThatIsALink();
    void refusesAPipeWithoutWaiting();
    void refusesADevice();
    void refusesAFileWithTwoNames();
    void refusesAFileOfAnotherUser();
    void keepsTheContentsOfARefusedFile();
    void closesRefusedFiles();
#endif

private:
    QString inFolder(const char* name) const
    {
        return m_folder->filePath(QString::fromUtf8(name));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileAccess::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_FileAccess::readsARegularFile()
{
    makeFile(inFolder("in.gcode"), "G28\n");

    const auto file = openInput(inFolder("in.gcode").toStdString());

    QCOMPARE(file->readAll(), QByteArray("G28\n"));
    QVERIFY(!file->isWritable());
}

void tst_FileAccess::writesAnExistingFile()
{
    makeFile(inFolder("out.x3g"), "something longer that was there");
    {
        const auto file = openOutput(inFolder("out.x3g").toStdString());
        QCOMPARE(contents(inFolder("out.x3g")), QByteArray());
        QCOMPARE(file->write("new"), qint64(3));
    }

    QCOMPARE(contents(inFolder("out.x3g")), QByteArray("new"));
}

void tst_FileAccess::takesPathsThatAreNotAscii()
{
    const QString path = inFolder("W\xC3\xBCrfel \xE2\x9C\x93.gcode");
    makeFile(path, "G28\n");

    QCOMPARE(openInput(path.toUtf8().toStdString())->readAll(), QByteArray("G28\n"));
    openOutput(path.toUtf8().toStdString());
    QCOMPARE(contents(path), QByteArray());
}

void tst_FileAccess::neverMakesAFile()
{
    const QString path = inFolder("missing");

    QCOMPARE(thrownBy(openInput, path),
             QStringLiteral("Cannot read %1: No such file or directory").arg(path));
    QCOMPARE(thrownBy(openOutput, path),
             QStringLiteral("Cannot write to %1: No such file or directory").arg(path));
    QVERIFY(!QFile::exists(path));
}

void tst_FileAccess::refusesAPathThatIsNotAbsolute_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("rest");

    QTest::newRow("empty") << QByteArray() << QByteArray("\"\": its path is not absolute");
    QTest::newRow("relative") << QByteArray("in.gcode")
                              << QByteArray("\"in.gcode\": its path is not absolute");
    QTest::newRow("upwards") << QByteArray("../in.gcode")
                             << QByteArray("\"../in.gcode\": its path is not absolute");
    QTest::newRow("resource") << QByteArray(":/service/machines.json")
                              << QByteArray(
                                     "\":/service/machines.json\": its path is not absolute");
    QTest::newRow("zero byte") << QByteArray("/etc/passwd\0.gcode", 18)
                               << QByteArray("a file: its path holds a zero byte");
}

void tst_FileAccess::refusesAPathThatIsNotAbsolute()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, rest);
    const auto thrown = [&](auto open) {
        try {
            open(path.toStdString());
        } catch (const std::runtime_error& error) {
            return QByteArray(error.what());
        }
        return QByteArray("nothing");
    };

    QCOMPARE(thrown(openInput), "Cannot read " + rest);
    QCOMPARE(thrown(openOutput), "Cannot write to " + rest);
}

void tst_FileAccess::refusesAFolder()
{
    const QString path = m_folder->path();

    QCOMPARE(thrownBy(openInput, path),
             QStringLiteral("Cannot read %1: it is not a regular file").arg(path));
    QVERIFY(thrownBy(openOutput, path).startsWith(QStringLiteral("Cannot write to ") + path));
    QVERIFY(
        thrownBy(openOutput, path + QLatin1Char('/')).startsWith(QStringLiteral("Cannot write")));
}

void tst_FileAccess::readsAFileFromItsBeginningAgain()
{
    makeFile(inFolder("in.gcode"), "G28\nM84\n");
    const std::shared_ptr<QFile> file = openInput(inFolder("in.gcode").toStdString());
    const auto all = [](const ByteSource& source) {
        std::string text;
        char buffer[3];
        while (const std::size_t count = source(buffer, sizeof buffer))
            text.append(buffer, count);
        return text;
    };

    QCOMPARE(all(byteSourceOf(file)), std::string("G28\nM84\n"));
    QCOMPARE(all(byteSourceOf(file)), std::string("G28\nM84\n"));
}

void tst_FileAccess::reportsAFileThatCannotBeRead()
{
    makeFile(inFolder("in.gcode"), "G28\n");
    const auto file = std::make_shared<QFile>(inFolder("in.gcode"));
    QVERIFY(file->open(QIODevice::WriteOnly));
    char buffer[8];

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("WriteOnly device")));
    QVERIFY_EXCEPTION_THROWN(byteSourceOf(file)(buffer, sizeof buffer), std::runtime_error);
}

void tst_FileAccess::leavesTheFileOpenForItsOwnerAlone()
{
    makeFile(inFolder("in.gcode"), "G28\n");
    std::shared_ptr<QFile> file = openInput(inFolder("in.gcode").toStdString());
    const ByteSource source = byteSourceOf(file);
    file.reset();
    char buffer[8];

    QCOMPARE(source(buffer, sizeof buffer), std::size_t(4));
}

#ifdef Q_OS_UNIX

void tst_FileAccess::readsThroughALinkButNeverWritesThroughOne()
{
    makeFile(inFolder("target"), "keep");
    const QString link = inFolder("link");
    QVERIFY(QFile::link(inFolder("target"), link));
    const QString dangling = inFolder("dangling");
    QVERIFY(QFile::link(inFolder("nowhere"), dangling));

    // People keep their files behind links; reading through one harms nobody.
    QCOMPARE(openInput(link.toStdString())->readAll(), QByteArray("keep"));
    QCOMPARE(thrownBy(openOutput, link),
             QStringLiteral("Cannot write to %1: it is a link").arg(link));
    QCOMPARE(thrownBy(openOutput, dangling),
             QStringLiteral("Cannot write to %1: it is a link").arg(dangling));
    QCOMPARE(contents(inFolder("target")), QByteArray("keep"));
    QVERIFY(!QFile::exists(inFolder("nowhere")));
}

void tst_FileAccess::refusesAFolderThatIsALink()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("real")));
    makeFile(inFolder("real/out"), "keep");
    QVERIFY(QFile::link(inFolder("real"), inFolder("alias")));
    const QString path = inFolder("alias/out");

    QCOMPARE(thrownBy(openOutput, path),
             QStringLiteral("Cannot write to %1: its folder is none, or is a link").arg(path));
    QCOMPARE(contents(inFolder("real/out")), QByteArray("keep"));
}

void tst_FileAccess::refusesAPipeWithoutWaiting()
{
    const QString path = inFolder("pipe");
    QCOMPARE(::mkfifo(path.toLocal8Bit().constData(), 0600), 0);

    QCOMPARE(thrownBy(openInput, path),
             QStringLiteral("Cannot read %1: it is not a regular file").arg(path));
    QVERIFY(thrownBy(openOutput, path).startsWith(QStringLiteral("Cannot write to ") + path));
}

void tst_FileAccess::refusesADevice()
{
    QCOMPARE(thrownBy(openInput, QStringLiteral("/dev/zero")),
             QStringLiteral("Cannot read /dev/zero: it is not a regular file"));
    QCOMPARE(thrownBy(openOutput, QStringLiteral("/dev/null")),
             QStringLiteral("Cannot write to /dev/null: it is not a regular file"));
}

void tst_FileAccess::refusesAFileWithTwoNames()
{
    const QString path = inFolder("out");
    makeFile(path, "keep");
    QCOMPARE(::link(path.toLocal8Bit().constData(), inFolder("other").toLocal8Bit().constData()),
             0);

    QCOMPARE(thrownBy(openOutput, path),
             QStringLiteral("Cannot write to %1: it has more than one name").arg(path));
    QCOMPARE(contents(path), QByteArray("keep"));
    QCOMPARE(thrownBy(openInput, path), QStringLiteral("nothing"));
}

void tst_FileAccess::refusesAFileOfAnotherUser()
{
    const QString path = inFolder("out");
    makeFile(path, "keep");
    if (::chown(path.toLocal8Bit().constData(), 65534, static_cast<gid_t>(-1)) != 0)
        QSKIP("only root can give a file away");

    QCOMPARE(thrownBy(openOutput, path),
             QStringLiteral("Cannot write to %1: it belongs to another user").arg(path));
    QCOMPARE(contents(path), QByteArray("keep"));
}

void tst_FileAccess::keepsTheContentsOfARefusedFile()
{
    if (::geteuid() == 0)
        QSKIP("root may write any file");
    const QString path = inFolder("out");
    makeFile(path, "keep");
    QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));

    QCOMPARE(thrownBy(openOutput, path),
             QStringLiteral("Cannot write to %1: Permission denied").arg(path));
    QCOMPARE(contents(path), QByteArray("keep"));
}

void tst_FileAccess::closesRefusedFiles()
{
    makeFile(inFolder("in"), "x");
    const int before = openInput(inFolder("in").toStdString())->handle();

    for (int i = 0; i < 100; ++i) {
        thrownBy(openInput, m_folder->path());
        thrownBy(openOutput, m_folder->path());
        thrownBy(openOutput, QStringLiteral("/dev/null"));
    }

    QCOMPARE(openInput(inFolder("in").toStdString())->handle(), before);
}

#endif

QTEST_GUILESS_MAIN(tst_FileAccess)
#include "tst_file_access.moc"
