#include "support/thrown_text.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <iomanip>
#include <set>
#include <thread>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

using namespace trovek;

namespace {

constexpr char kLogUnit[] = "tests\\tst_log";

/** Adds a sink while it lives. */
class SinkScope
{
public:
    explicit SinkScope(std::shared_ptr<LogSink> sink)
        : m_sink(std::move(sink))
    {
        addLogSink(m_sink);
    }
    ~SinkScope() { removeLogSink(m_sink); }

private:
    const std::shared_ptr<LogSink> m_sink;
};

struct Capture
{
    const std::shared_ptr<CapturingLogSink> sink = std::make_shared<CapturingLogSink>();
    const SinkScope scope{sink};

    std::vector<std::string> messages(int severity = -1) const { return sink->messages(severity); }
};

class FunctionSink : public LogSink
{
public:
    explicit FunctionSink(std::function<void(const LogEntry&)> function)
        : m_function(std::move(function))
    {}
    void write(const LogEntry& entry) override { m_function(entry); }

private:
    const std::function<void(const LogEntry&)> m_function;
};

std::string answerThatLogs()
{
    TROVEK_LOG(2) << "inside" << std::endl;
    return "answer";
}

std::string answerThatForgetsToEndItsLine()
{
    TROVEK_LOG(2) << "forgotten inside";
    return "answer";
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

using Texts = std::vector<std::string>;

} // namespace

class tst_Log : public QObject
{
    Q_OBJECT

private slots:
    void anEntryKnowsWhereAndWhenItWasMade();
    void aLineBreakInsideDoesNotEndTheEntry();
    void aFlushWithoutLineBreakDoesNotEndTheEntry();
    void whatFollowsTheEndIsDropped();
    void emptyMessagesCount();
    void numberFormatsDoNotReachTheNextEntry();
    void anEntryInsideAnotherStandsAlone();
    void whatIsForgottenInsideComesBeforeTheEntryAroundIt();
    void forgottenEntriesComeOutAndTheNextOnesAreWhole();
    void forgottenEntriesComeOutWhenTheThreadEnds();
    void threadsDoNotTearEachOthersEntries();
    void sinksReceiveNothingAfterTheirRemoval();
    void aSinkThatThrowsKeepsNothingFromTheOthers();
    void aSinkMayLog();
    void aSinkMayRemoveItself();
    void messagesCanBeAskedForBySeverity();
    void aFormattedEntryIsOneLine_data();
    void aFormattedEntryIsOneLine();
    void theFileRotates();
    void aFileWithoutFolderIsRefused();
    void standardErrorTakesWhatIsImportantEnough();
};

void tst_Log::anEntryKnowsWhereAndWhenItWasMade()
{
    const Capture capture;
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    const std::uint64_t line = __LINE__ + 1;
    TROVEK_LOG(1) << "hello " << 5 << std::endl;

    QCOMPARE(capture.sink->entries().size(), std::size_t(1));
    const LogEntry entry = capture.sink->entries()[0];
    QCOMPARE(entry.severity, 1);
    QCOMPARE(entry.file, std::string("tests\\tst_log"));
    QVERIFY(entry.function.find("tst_Log::anEntryKnowsWhereAndWhenItWasMade") != std::string::npos);
    QCOMPARE(entry.line, line);
    QVERIFY(entry.time >= before && entry.time <= QDateTime::currentSecsSinceEpoch());
    QCOMPARE(entry.message, std::string("hello 5"));
}

void tst_Log::aLineBreakInsideDoesNotEndTheEntry()
{
    const Capture capture;
    TROVEK_LOG(0) << "first\nsecond\n"
                  << "third" << std::endl;
    QCOMPARE(capture.messages(), Texts{"first\nsecond\nthird"});
}

void tst_Log::aFlushWithoutLineBreakDoesNotEndTheEntry()
{
    const Capture capture;
    TROVEK_LOG(0) << "one" << std::flush << " two" << std::endl;
    QCOMPARE(capture.messages(), Texts{"one two"});
}

void tst_Log::whatFollowsTheEndIsDropped()
{
    const Capture capture;
    TROVEK_LOG(0) << "one" << std::endl << "two" << std::endl;
    TROVEK_LOG(0) << "three" << std::endl;
    QCOMPARE(capture.messages(), (Texts{"one", "three"}));
}

void tst_Log::emptyMessagesCount()
{
    const Capture capture;
    TROVEK_LOG(0) << std::endl;
    QCOMPARE(capture.messages(), Texts{""});
}

void tst_Log::numberFormatsDoNotReachTheNextEntry()
{
    const Capture capture;
    TROVEK_LOG(0) << std::hex << std::showbase << std::setfill('x') << 255 << std::endl;
    TROVEK_LOG(0) << std::setw(4) << 255 << std::endl;
    std::ostream& stream = TROVEK_LOG(0);
    stream.setstate(std::ios::failbit);
    stream << "lost" << std::endl;
    TROVEK_LOG(0) << "well" << std::endl;
    const Texts messages = capture.messages();
    QCOMPARE(messages[0], std::string("0xff"));
    QCOMPARE(messages[1], std::string(" 255"));
    QCOMPARE(messages.back(), std::string("well"));
}

void tst_Log::anEntryInsideAnotherStandsAlone()
{
    const Capture capture;
    TROVEK_LOG(1) << "outer " << answerThatLogs() << " again " << answerThatLogs() << std::endl;
    QCOMPARE(capture.messages(), (Texts{"inside", "inside", "outer answer again answer"}));
    QCOMPARE(capture.messages(1), Texts{"outer answer again answer"});
    QCOMPARE(capture.messages(2), (Texts{"inside", "inside"}));
}

void tst_Log::whatIsForgottenInsideComesBeforeTheEntryAroundIt()
{
    const Capture capture;
    TROVEK_LOG(1) << "outer " << answerThatForgetsToEndItsLine() << std::endl;
    QCOMPARE(capture.messages(), (Texts{"forgotten inside", "outer answer"}));
}

void tst_Log::forgottenEntriesComeOutAndTheNextOnesAreWhole()
{
    const Capture capture;
    std::thread thread([&capture] {
        for (int i = 0; i < 100; ++i) {
            TROVEK_LOG(0) << "forgotten " << i;
            TROVEK_LOG(1) << "whole " << i << std::endl;
        }
        // Only the last few can still be open: nothing grows for ever.
        QVERIFY(capture.messages(0).size() > 80);
    });
    thread.join();
    QCOMPARE(capture.messages(1).size(), std::size_t(100));
    QCOMPARE(capture.messages(1).back(), std::string("whole 99"));
}

void tst_Log::forgottenEntriesComeOutWhenTheThreadEnds()
{
    const Capture capture;
    std::thread([] { TROVEK_LOG(0) << "last words"; }).join();
    QCOMPARE(capture.messages(), Texts{"last words"});
}

void tst_Log::threadsDoNotTearEachOthersEntries()
{
    constexpr int kThreads = 8;
    constexpr int kEntries = 300;
    const Capture capture;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([number] {
            for (int i = 0; i < kEntries; ++i)
                TROVEK_LOG(1) << number << ':' << i << ' ' << answerThatLogs() << ';' << std::endl;
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    std::multiset<std::string> expected;
    for (int number = 0; number < kThreads; ++number) {
        for (int i = 0; i < kEntries; ++i)
            expected.insert(std::to_string(number) + ':' + std::to_string(i) + " answer;");
    }
    const Texts messages = capture.messages(1);
    QVERIFY(std::multiset<std::string>(messages.begin(), messages.end()) == expected);
    QCOMPARE(capture.messages(2).size(), std::size_t(kThreads * kEntries));
}

void tst_Log::sinksReceiveNothingAfterTheirRemoval()
{
    const auto sink = std::make_shared<CapturingLogSink>();
    addLogSink(sink);
    TROVEK_LOG(0) << "heard" << std::endl;
    removeLogSink(sink);
    TROVEK_LOG(0) << "unheard" << std::endl;
    QCOMPARE(sink->messages(), Texts{"heard"});
    QCOMPARE(sink.use_count(), 1L);
}

void tst_Log::aSinkThatThrowsKeepsNothingFromTheOthers()
{
    const SinkScope thrower(std::make_shared<FunctionSink>(
        [](const LogEntry&) { throw std::runtime_error("disk full"); }));
    const Capture capture;
    TROVEK_LOG(0) << "one" << std::endl;
    TROVEK_LOG(0) << "two" << std::endl;
    QCOMPARE(capture.messages(), (Texts{"one", "two"}));
}

void tst_Log::aSinkMayLog()
{
    const Capture capture;
    const SinkScope talker(std::make_shared<FunctionSink>(
        [](const LogEntry& entry) { TROVEK_LOG(1) << "saw " << entry.message << std::endl; }));
    TROVEK_LOG(0) << "one" << std::endl;
    // What the sink says of its own line is dropped, or this would never return.
    QCOMPARE(capture.messages(), (Texts{"one", "saw one"}));
    TROVEK_LOG(0) << "two" << std::endl;
    QCOMPARE(capture.messages(), (Texts{"one", "saw one", "two", "saw two"}));
}

void tst_Log::aSinkMayRemoveItself()
{
    const Capture capture;
    int count = 0;
    std::shared_ptr<LogSink> sink;
    sink = std::make_shared<FunctionSink>([&](const LogEntry&) {
        ++count;
        removeLogSink(sink);
    });
    addLogSink(sink);
    TROVEK_LOG(0) << "one" << std::endl;
    TROVEK_LOG(0) << "two" << std::endl;
    QCOMPARE(count, 1);
    QCOMPARE(capture.messages(), (Texts{"one", "two"}));
}

void tst_Log::messagesCanBeAskedForBySeverity()
{
    const Capture capture;
    TROVEK_LOG(0) << "error" << std::endl;
    TROVEK_LOG(1) << "progress" << std::endl;
    QCOMPARE(capture.messages(0), Texts{"error"});
    QCOMPARE(capture.messages(2), Texts{});
    capture.sink->clear();
    QCOMPARE(capture.messages(), Texts{});
}

void tst_Log::aFormattedEntryIsOneLine_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("shown");

    QTest::newRow("plain") << QByteArray("hello") << QByteArray("hello");
    QTest::newRow("line feed") << QByteArray("a\nb\n") << QByteArray("a\\nb\\n");
    QTest::newRow("carriage return and line feed")
        << QByteArray("a\r\nb") << QByteArray("a\\r\\nb");
    QTest::newRow("tabulator") << QByteArray("a\tb") << QByteArray("a\\tb");
    QTest::newRow("escape of a terminal") << QByteArray("\x1b[31m") << QByteArray("\\u001b[31m");
    QTest::newRow("null byte") << QByteArray("a\0b", 3) << QByteArray("a\\u0000b");
    QTest::newRow("eight bit control") << QByteArray("\xc2\x9b") << QByteArray("\\u009b");
    QTest::newRow("line separator") << QByteArray("\xe2\x80\xa8") << QByteArray("\\u2028");
    QTest::newRow("umlaut") << QByteArray("\xc3\xbc") << QByteArray("\xc3\xbc");
    QTest::newRow("not UTF-8") << QByteArray("a\xff") << QByteArray("a\xef\xbf\xbd");
    QTest::newRow("backslash") << QByteArray("C:\\new") << QByteArray("C:\\new");
}

void tst_Log::aFormattedEntryIsOneLine()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, shown);
    LogEntry entry;
    entry.severity = 0;
    entry.file = "src\\core\\job_watch";
    entry.function = "void f()";
    entry.line = 42;
    entry.time = 1700000000;
    entry.message = message.toStdString();
    QCOMPARE(formatLogEntry(entry),
             "2023-11-14T22:13:20Z error src\\core\\job_watch:42 [void f()] " +
                 shown.toStdString());
}

void tst_Log::theFileRotates()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("h\u00f6st.log"));
    {
        const SinkScope file(makeRotatingFileLogSink(toStdString(path), 400, 2));
        for (int i = 0; i < 20; ++i)
            TROVEK_LOG(1) << "entry " << i << "\nstill" << std::endl;
        // Readable at once, also when the program crashes afterwards.
        QVERIFY(contentOf(path).endsWith("entry 19\\nstill\n"));
    }
    QVERIFY(contentOf(folder.filePath(QStringLiteral("h\u00f6st.1.log"))).contains("\\nstill\n"));
    QVERIFY(QFile(path).size() <= 400);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 3);
}

void tst_Log::aFileWithoutFolderIsRefused()
{
    const QTemporaryDir folder;
    const std::string missing = toStdString(folder.filePath(QStringLiteral("missing/x.log")));
    QCOMPARE(thrownText([&] { makeRotatingFileLogSink(missing); }),
             "No folder for the log file: " + missing);
    QVERIFY(thrownText([&] { makeRotatingFileLogSink(toStdString(folder.path())); }) !=
            "nothing thrown");
}

void tst_Log::standardErrorTakesWhatIsImportantEnough()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("stderr")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const int saved = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    {
        const SinkScope sink(makeStandardErrorLogSink(1));
        TROVEK_LOG(0) << "zero" << std::endl;
        TROVEK_LOG(1) << "one" << std::endl;
        TROVEK_LOG(2) << "two" << std::endl;
    }
    dup2(saved, STDERR_FILENO);
    close(saved);
    const QByteArray written = contentOf(file.fileName());
    QVERIFY(written.contains("] zero\n"));
    QVERIFY(written.endsWith("] one\n"));
}

QTEST_GUILESS_MAIN(tst_Log)
#include "tst_log.moc"
