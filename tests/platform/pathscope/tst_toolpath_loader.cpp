#include "toolpaths_maker.h"

#include <pathscope/gcode_parser.h>
#include <pathscope/toolpath_loader.h>

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

#include <sys/stat.h>

using namespace pathscope;

namespace {

constexpr int kPatienceMs = 30000;

/** The signals of a loader, in the order in which they come. */
class Heard : public QObject
{
public:
    explicit Heard(ToolpathLoader& loader)
    {
        loader.installEventFilter(this);
        connect(&loader, &ToolpathLoader::progressChanged, this,
                [this](double fraction) { add(QStringLiteral("progress %1").arg(fraction)); });
        connect(&loader, &ToolpathLoader::pieceReady, this,
                [this](const std::shared_ptr<const Toolpaths>& piece) {
                    add(QStringLiteral("piece %1").arg(piece->segmentCount));
                });
        connect(&loader, &ToolpathLoader::finished, this,
                [this](const std::shared_ptr<const Toolpaths>& paths) {
                    add(QStringLiteral("finished %1").arg(paths->segmentCount));
                    m_isOver = true;
                });
        connect(&loader, &ToolpathLoader::failed, this, [this](const QString& reason) {
            add(QStringLiteral("failed: ") + reason);
            m_isOver = true;
        });
    }

    bool isOver() const { return m_isOver; }
    const QStringList& names() const { return m_names; }
    const std::vector<std::thread::id>& threads() const { return m_threads; }
    /** How often the event loop was asked to deliver. */
    int deliveries() const { return m_deliveries; }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        m_deliveries += event->type() == QEvent::MetaCall ? 1 : 0;
        return false;
    }

private:
    void add(const QString& name)
    {
        m_names.append(name);
        m_threads.push_back(std::this_thread::get_id());
    }

    bool m_isOver = false;
    int m_deliveries = 0;
    QStringList m_names;
    std::vector<std::thread::id> m_threads;
};

std::shared_ptr<const Toolpaths> pathsOf(std::uint64_t segments)
{
    auto paths = std::make_shared<Toolpaths>();
    paths->segmentCount = segments;
    return paths;
}

/** Waits as a parser of a large file does: until it is canceled. */
std::shared_ptr<const Toolpaths> readUntilCanceled(const ParseOptions& options)
{
    while (!options.canceled->load())
        std::this_thread::yield();
    return pathsOf(0);
}

/** Until the test goes on, or fails and takes the loader down. */
void waitFor(QSemaphore& goOn, const ParseOptions& options)
{
    while (!goOn.tryAcquire() && !options.canceled->load())
        std::this_thread::yield();
}

/** Lets whatever is queued come. */
void deliverEvents()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

} // namespace

class tst_ToolpathLoader : public QObject
{
    Q_OBJECT

private slots:
    void readsAFile();
    void tellsWhatItReads();
    void tellsNothingFromWithinTheCall();
    void piecesAndProgressComeInOrder();
    void aSlowEventLoopGetsTheLatestOnly();
    void filesThatCannotBeReadFail_data();
    void filesThatCannotBeReadFail();
    void whatIsThrownFails_data();
    void whatIsThrownFails();
    void anEmptyFileIsNoFailure();
    void aCanceledFileIsNotDelivered();
    void aResultThatWaitsIsNotDeliveredAfterACancel();
    void theNextFileReplacesTheFirst();
    void theSameLoaderReadsAgain();
    void destructionEndsTheReading();
    void mayBeDestroyedInItsSignals_data();
    void mayBeDestroyedInItsSignals();
    void mayBeCanceledInItsSignals();
    void mayLoadTheNextFileInItsSignals();
};

void tst_ToolpathLoader::readsAFile()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("W\u00fcrfel \u20ac.gcode"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("G90\nM83\nG1 Z0.2 F3000\nG1 X10 Y10\nG1 X20 E1\nG1 Y20 E1\n");
    file.close();
    ToolpathLoader loader;
    QSignalSpy finished(&loader, &ToolpathLoader::finished);

    loader.load(path);

    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kPatienceMs);
    const auto paths = finished.first().first().value<std::shared_ptr<const Toolpaths>>();
    QVERIFY(paths->complete);
    QCOMPARE(paths->extrudingCount, std::uint64_t(2));
    QVERIFY2(paths->objectBounds.valid, "The window need not look for it");
    QVERIFY(paths->objectBounds.max[0] > paths->bounds.max[0]);
}

void tst_ToolpathLoader::tellsWhatItReads()
{
    ToolpathLoader loader([](const std::string&, const ParseOptions&) { return pathsOf(1); });
    Heard ear(loader);
    QVERIFY(!loader.isLoading());
    QCOMPARE(loader.file(), QString());
    bool wasLoading = true;
    connect(&loader, &ToolpathLoader::finished, this, [&] { wasLoading = loader.isLoading(); });

    loader.load(QStringLiteral("/some/file.gcode"));
    QVERIFY(loader.isLoading());
    QCOMPARE(loader.file(), QStringLiteral("/some/file.gcode"));

    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);
    QVERIFY2(!wasLoading, "It is over when it says so");
    QVERIFY(!loader.isLoading());
    QCOMPARE(loader.file(), QStringLiteral("/some/file.gcode"));
}

void tst_ToolpathLoader::tellsNothingFromWithinTheCall()
{
    QSemaphore done;
    ToolpathLoader loader([&](const std::string&, const ParseOptions& options) {
        options.progress(0.5);
        options.piece(pathsOf(1));
        done.release();
        return pathsOf(2);
    });
    Heard ear(loader);

    loader.load(QStringLiteral("file"));
    QVERIFY(done.tryAcquire(1, kPatienceMs));
    QCOMPARE(ear.names(), QStringList());

    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);
    for (const std::thread::id thread : ear.threads())
        QVERIFY(thread == std::this_thread::get_id());
}

void tst_ToolpathLoader::piecesAndProgressComeInOrder()
{
    QSemaphore goOn;
    ToolpathLoader loader([&](const std::string&, const ParseOptions& options) {
        options.progress(0.25);
        waitFor(goOn, options);
        options.piece(pathsOf(10));
        waitFor(goOn, options);
        options.progress(0.5);
        waitFor(goOn, options);
        return pathsOf(30);
    });
    Heard ear(loader);

    loader.load(QStringLiteral("file"));
    for (int told = 1; told <= 3; ++told) {
        QTRY_COMPARE_WITH_TIMEOUT(ear.names().size(), told, kPatienceMs);
        goOn.release();
    }
    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);

    QCOMPARE(ear.names(), (QStringList{QStringLiteral("progress 0.25"), QStringLiteral("piece 10"),
                                       QStringLiteral("progress 0.5"), QStringLiteral("progress 1"),
                                       QStringLiteral("finished 30")}));
}

void tst_ToolpathLoader::aSlowEventLoopGetsTheLatestOnly()
{
    QSemaphore told;
    QSemaphore goOn;
    ToolpathLoader loader([&](const std::string&, const ParseOptions& options) {
        for (int i = 1; i <= 100000; ++i)
            options.progress(i / 200000.0);
        for (std::uint64_t i = 1; i <= 100; ++i)
            options.piece(pathsOf(i));
        told.release();
        waitFor(goOn, options);
        return pathsOf(1000);
    });
    Heard ear(loader);

    loader.load(QStringLiteral("file"));
    QVERIFY(told.tryAcquire(1, kPatienceMs));
    deliverEvents();
    QCOMPARE(ear.names(),
             (QStringList{QStringLiteral("progress 0.5"), QStringLiteral("piece 100")}));
    QCOMPARE(ear.deliveries(), 1);

    goOn.release();
    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);
    QCOMPARE(ear.names().size(), 4);
}

void tst_ToolpathLoader::filesThatCannotBeReadFail_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");

    QTest::newRow("a file that is not there")
        << QStringLiteral("none.gcode") << QStringLiteral("The file %1 does not exist.");
    QTest::newRow("a folder") << QStringLiteral("folder") << QStringLiteral("%1 is a folder.");
    QTest::newRow("a pipe") << QStringLiteral("pipe") << QStringLiteral("%1 is not a file.");
}

void tst_ToolpathLoader::filesThatCannotBeReadFail()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    QCOMPARE(::mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))), 0600), 0);
    const QString path = folder.filePath(name);
    ToolpathLoader loader;
    Heard ear(loader);

    loader.load(path);

    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);
    QCOMPARE(ear.names(),
             QStringList{QStringLiteral("failed: ") + reason.arg(QDir::toNativeSeparators(path))});
    QVERIFY(!loader.isLoading());
}

void tst_ToolpathLoader::whatIsThrownFails_data()
{
    QTest::addColumn<bool>("isMemory");
    QTest::addColumn<QString>("reason");

    QTest::newRow("an error of the reader")
        << false << QStringLiteral("The file %1 cannot be read.");
    QTest::newRow("no memory") << true << QStringLiteral("There is not enough memory to read %1.");
}

void tst_ToolpathLoader::whatIsThrownFails()
{
    QFETCH(bool, isMemory);
    QFETCH(QString, reason);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.gcode"));
    QVERIFY(QFile(path).open(QIODevice::WriteOnly));
    ToolpathLoader loader(
        [&](const std::string&, const ParseOptions&) -> std::shared_ptr<const Toolpaths> {
            if (isMemory)
                throw std::bad_alloc();
            throw std::runtime_error("torn \342\202\254");
        });
    Heard ear(loader);

    // Twice: a failure leaves nothing behind.
    for (int i = 1; i <= 2; ++i) {
        loader.load(path);
        QTRY_COMPARE_WITH_TIMEOUT(ear.names().size(), i, kPatienceMs);
        QCOMPARE(ear.names().last(),
                 QStringLiteral("failed: ") + reason.arg(QDir::toNativeSeparators(path)));
    }
}

void tst_ToolpathLoader::anEmptyFileIsNoFailure()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("empty.gcode"));
    QVERIFY(QFile(path).open(QIODevice::WriteOnly));
    ToolpathLoader loader;
    Heard ear(loader);

    loader.load(path);

    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);
    QCOMPARE(ear.names(),
             (QStringList{QStringLiteral("progress 1"), QStringLiteral("finished 0")}));
}

void tst_ToolpathLoader::aCanceledFileIsNotDelivered()
{
    QSemaphore told;
    ToolpathLoader loader([&](const std::string&, const ParseOptions& options) {
        options.progress(0.5);
        options.piece(pathsOf(5));
        told.release();
        return readUntilCanceled(options);
    });
    Heard ear(loader);
    loader.load(QStringLiteral("file"));
    QVERIFY(told.tryAcquire(1, kPatienceMs));

    loader.cancel();

    QVERIFY(!loader.isLoading());
    deliverEvents();
    QCOMPARE(ear.names(), QStringList());
    loader.cancel();
}

void tst_ToolpathLoader::aResultThatWaitsIsNotDeliveredAfterACancel()
{
    QSemaphore told;
    ToolpathLoader loader([&](const std::string&, const ParseOptions&) {
        told.release();
        return pathsOf(1);
    });
    Heard ear(loader);
    loader.load(QStringLiteral("file"));
    QVERIFY(told.tryAcquire(1, kPatienceMs));

    // Joins, so that the result stands in the queue by now.
    loader.cancel();

    deliverEvents();
    QCOMPARE(ear.names(), QStringList());
}

void tst_ToolpathLoader::theNextFileReplacesTheFirst()
{
    ToolpathLoader loader([](const std::string& path, const ParseOptions& options) {
        options.progress(0.125);
        return path == "first" ? readUntilCanceled(options) : pathsOf(7);
    });
    Heard ear(loader);
    loader.load(QStringLiteral("first"));
    QTRY_COMPARE_WITH_TIMEOUT(ear.names().size(), 1, kPatienceMs);

    loader.load(QStringLiteral("second"));

    QTRY_VERIFY_WITH_TIMEOUT(ear.isOver(), kPatienceMs);
    QCOMPARE(loader.file(), QStringLiteral("second"));
    QCOMPARE(ear.names().last(), QStringLiteral("finished 7"));
    QCOMPARE(ear.names().filter(QStringLiteral("finished")).size(), 1);
}

void tst_ToolpathLoader::theSameLoaderReadsAgain()
{
    ToolpathLoader loader(
        [](const std::string& path, const ParseOptions&) { return pathsOf(path.size()); });
    QSignalSpy finished(&loader, &ToolpathLoader::finished);

    for (int i = 1; i <= 3; ++i) {
        loader.load(QString(i, QLatin1Char('x')));
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), i, kPatienceMs);
        const auto paths = finished.last().first().value<std::shared_ptr<const Toolpaths>>();
        QCOMPARE(paths->segmentCount, std::uint64_t(i));
    }
}

void tst_ToolpathLoader::destructionEndsTheReading()
{
    QSemaphore started;
    std::atomic<bool> ended{false};
    auto loader =
        std::make_unique<ToolpathLoader>([&](const std::string&, const ParseOptions& options) {
            options.progress(0.5);
            started.release();
            auto paths = readUntilCanceled(options);
            ended = true;
            return paths;
        });
    Heard ear(*loader);
    loader->load(QStringLiteral("file"));
    QVERIFY(started.tryAcquire(1, kPatienceMs));

    loader.reset();

    QVERIFY(ended);
    deliverEvents();
    QCOMPARE(ear.names(), QStringList());
}

void tst_ToolpathLoader::mayBeDestroyedInItsSignals_data()
{
    QTest::addColumn<QString>("atSignal");
    QTest::addColumn<QStringList>("heard");

    const QString progress = QStringLiteral("progress 0.5");
    const QString piece = QStringLiteral("piece 5");
    QTest::newRow("progress") << QStringLiteral("progress") << QStringList{progress};
    QTest::newRow("piece") << QStringLiteral("piece") << QStringList{progress, piece};
    QTest::newRow("finished") << QStringLiteral("finished")
                              << QStringList{progress, piece, QStringLiteral("progress 1"),
                                             QStringLiteral("finished 9")};
    QTest::newRow("failed") << QStringLiteral("failed")
                            << QStringList{progress, piece,
                                           QStringLiteral("failed: The file f does not exist.")};
}

void tst_ToolpathLoader::mayBeDestroyedInItsSignals()
{
    QFETCH(QString, atSignal);
    QFETCH(QStringList, heard);
    QSemaphore told;
    QSemaphore goOn;
    auto loader =
        std::make_unique<ToolpathLoader>([&](const std::string&, const ParseOptions& options) {
            options.progress(0.5);
            options.piece(pathsOf(5));
            told.release();
            waitFor(goOn, options);
            if (atSignal == QLatin1String("failed"))
                throw std::runtime_error("torn");
            return pathsOf(9);
        });
    Heard ear(*loader);
    const auto destroyAt = [&](const char* name) {
        if (atSignal == QLatin1String(name))
            loader.reset();
    };
    connect(loader.get(), &ToolpathLoader::progressChanged, this, [&] { destroyAt("progress"); });
    connect(loader.get(), &ToolpathLoader::pieceReady, this, [&] { destroyAt("piece"); });
    connect(loader.get(), &ToolpathLoader::finished, this, [&] { destroyAt("finished"); });
    connect(loader.get(), &ToolpathLoader::failed, this, [&] { destroyAt("failed"); });

    loader->load(QStringLiteral("f"));
    QVERIFY(told.tryAcquire(1, kPatienceMs));
    deliverEvents();
    goOn.release();

    QTRY_VERIFY_WITH_TIMEOUT(loader == nullptr, kPatienceMs);
    deliverEvents();
    QCOMPARE(ear.names(), heard);
}

void tst_ToolpathLoader::mayBeCanceledInItsSignals()
{
    QSemaphore told;
    ToolpathLoader loader([&](const std::string&, const ParseOptions& options) {
        options.progress(0.5);
        options.piece(pathsOf(5));
        told.release();
        return readUntilCanceled(options);
    });
    Heard ear(loader);
    connect(&loader, &ToolpathLoader::progressChanged, &loader, &ToolpathLoader::cancel);

    loader.load(QStringLiteral("file"));
    QVERIFY(told.tryAcquire(1, kPatienceMs));
    deliverEvents();

    QCOMPARE(ear.names(), QStringList{QStringLiteral("progress 0.5")});
    QVERIFY(!loader.isLoading());
}

void tst_ToolpathLoader::mayLoadTheNextFileInItsSignals()
{
    ToolpathLoader loader(
        [](const std::string& path, const ParseOptions&) { return pathsOf(path.size()); });
    Heard ear(loader);
    connect(&loader, &ToolpathLoader::finished, this, [&] {
        if (loader.file().size() < 3)
            loader.load(loader.file() + QLatin1Char('x'));
    });

    loader.load(QStringLiteral("x"));

    QTRY_COMPARE_WITH_TIMEOUT(
        ear.names().filter(QStringLiteral("finished")),
        (QStringList{QStringLiteral("finished 1"), QStringLiteral("finished 2"),
                     QStringLiteral("finished 3")}),
        kPatienceMs);
}

QTEST_GUILESS_MAIN(tst_ToolpathLoader)
#include "tst_toolpath_loader.moc"
