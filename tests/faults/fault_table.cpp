#include "fault_table.h"

#include "fault_scene.h"

#include "support/test_log.h"

#include <trovek/simulated_fault.h>

#include <QTest>

namespace trovek {

namespace {

constexpr int kPatienceMs = 20000;

/** The error that the client throws, as far as it is known beforehand. */
QString errorText(const WindowOperation& operation, FaultKind kind)
{
    const QString method = QString::fromLatin1(operation.method);
    switch (kind) {
    case FaultKind::Never:
        return QStringLiteral("No answer to \"%1\" within 25").arg(method);
    case FaultKind::NamedError:
    case FaultKind::BareError:
        return QStringLiteral("It went wrong");
    case FaultKind::OddNull:
    case FaultKind::OddText:
    case FaultKind::OddList:
    case FaultKind::OddObject:
        return QStringLiteral("Odd answer to ") + method;
    case FaultKind::DropBefore:
    case FaultKind::StopDuring:
    case FaultKind::KillDuring:
        return QStringLiteral("Connection closed by the other side");
    default:
        return QString();
    }
}

/** One cell of the table. */
class Cell
{
public:
    Cell(TrovekQt& facade, const WindowOperation& operation, FaultKind kind, TestLog& log)
        : m_log(log)
        , m_scene(facade, operation, kind)
        , m_operation(operation)
        , m_window(operation.open(m_scene))
    {}

    /** Presses the button while that is wrong. */
    void fail(FaultKind kind)
    {
        bool canPress = m_window->prepare();
        if (const auto found = m_operation.messageAtReturn.find(kind);
            found != m_operation.messageAtReturn.end()) {
            m_log.allowErrors("");
            m_driver.expectMessage(found->second);
        }
        m_scene.breakIt(kind);
        QTRY_VERIFY_WITH_TIMEOUT(m_driver.isDone(), kPatienceMs);
        // Of what the window has heard, the user sees what he still can do.
        if (isHeardOfBefore(kind))
            canPress = m_window->prepare();
        fail(m_operation.verdictOf(kind), errorText(m_operation, kind), canPress);
    }

    void fail(const JsonRpcException& error, const Verdict& verdict)
    {
        const bool canPress = m_window->prepare();
        m_scene.breakIt(SimulatedFault::error(m_operation.method, error));
        fail(verdict, QString::fromStdString(error.message()), canPress);
    }

    /** Whatever was wrong is over: the same window goes on, or another one of its kind. */
    void goOn()
    {
        if (!m_window->isOpen())
            m_window.reset();
        m_scene.repair();
        if (!m_window)
            m_window = m_operation.open(m_scene);
        QVERIFY2(m_window->prepare(), "It cannot be used any more");
        press(m_operation.success, QString());
        compareEffect(Verdict::Done);
        QTRY_COMPARE(m_window->leftovers(), QStringList());
    }

private:
    void fail(const Verdict& verdict, const QString& usualError, bool canPress)
    {
        const QString error = verdict.error.value_or(usualError);
        if (canPress) {
            if (verdict.logged < 0)
                m_log.allowErrors("");
            for (int line = 0; line < verdict.logged; ++line)
                m_log.expectError(line == 0 ? error : QString());
            press(verdict, error);
        }
        m_scene.joinBreaker();
        FaultScene::settle();
        const QString told = QString(verdict.told).replace(QLatin1String("%1"), error);
        QString shown;
        const auto isTold = [&] {
            shown = m_window->told();
            return verdict.told.isEmpty() ? shown.isEmpty() : shown.startsWith(told);
        };
        // News of the machine come after the answer.
        QVERIFY2(QTest::qWaitFor(isTold, kPatienceMs), qPrintable(shown));
        compareEffect(canPress ? verdict.effect : Verdict::NotDone);
        if (canPress && verdict.effect != Verdict::Either)
            QCOMPARE(m_window->leftovers(), QStringList());
        m_log.verify();
    }

    void press(const Verdict& verdict, const QString& error)
    {
        if (verdict.isAsked)
            m_window->announceQuestions(m_driver);
        if (verdict.hasResult)
            m_window->announceResult(m_driver);
        for (const QStringList& message : verdict.messages)
            m_driver.expect([=](QDialog* box) { readMessage(box, message, error); });
        m_window->press();
        QTRY_VERIFY_WITH_TIMEOUT(m_driver.isDone(), kPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::activeModalWidget() == nullptr, kPatienceMs);
        FaultScene::settle();
    }

    static void readMessage(QDialog* box, const QStringList& beginnings, const QString& error)
    {
        const QStringList texts = messageTexts(box);
        QVERIFY2(texts.size() == beginnings.size(), qPrintable(texts.join(QLatin1Char('/'))));
        for (int i = 0; i < texts.size(); ++i) {
            const QString beginning = QString(beginnings[i]).replace(QLatin1String("%1"), error);
            QVERIFY2(texts[i].startsWith(beginning), qPrintable(texts[i]));
        }
        pressButton(box, QStringLiteral("&OK"));
    }

    void compareEffect(Verdict::Effect effect)
    {
        // Here, too, news may come after the answer.
        if (effect == Verdict::Done)
            QVERIFY2(QTest::qWaitFor([this] { return m_window->isDone(); }, kPatienceMs),
                     "It was not done");
        else if (effect == Verdict::NotDone)
            QVERIFY2(QTest::qWaitFor([this] { return !m_window->isDone(); }, kPatienceMs),
                     "It was done");
    }

    TestLog& m_log;
    /** From the beginning, so that no window that nobody expects stays open. */
    ModalDriver m_driver;
    FaultScene m_scene;
    const WindowOperation& m_operation;
    std::unique_ptr<WindowInUse> m_window;
};

} // namespace

FaultTable::FaultTable(std::vector<WindowOperation> operations)
    : m_operations(std::move(operations))
{
    // What the library leaves in the system's folder is told from what others leave there.
    qputenv("TMPDIR", QFile::encodeName(m_temporary.path()));
}

void FaultTable::staysUsable_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<int>("namedError");
    QTest::addColumn<FaultKind>("kind");

    for (std::size_t i = 0; i < m_operations.size(); ++i) {
        const WindowOperation& operation = m_operations[i];
        const auto row = [&](const char* fault, FaultKind kind, int namedError = -1) {
            QTest::addRow("%s: %s", operation.name.constData(), fault)
                << int(i) << namedError << kind;
        };
        for (const FaultKind kind : usualFaults()) {
            if (operation.notMet.count(kind) == 0)
                row(nameOf(kind), kind);
        }
        for (const FaultKind kind : operation.moreFaults)
            row(nameOf(kind), kind);
        for (std::size_t error = 0; error < operation.namedErrors.size(); ++error)
            row(operation.namedErrors[error].first.message().c_str(), FaultKind::NamedError,
                int(error));
    }
}

void FaultTable::staysUsable()
{
    QFETCH(int, operation);
    QFETCH(int, namedError);
    QFETCH(FaultKind, kind);
#ifndef Q_OS_UNIX
    if (kind == FaultKind::KillDuring)
        QSKIP("There is no such signal");
#endif
    TestLog log;
    // A port without a printer has no picture.
    log.allowErrors("null printer");
    const WindowOperation& chosen = m_operations[std::size_t(operation)];
    try {
        Cell cell(m_facade, chosen, kind, log);
        if (namedError < 0) {
            cell.fail(kind);
        } else {
            const auto& [error, verdict] = chosen.namedErrors[std::size_t(namedError)];
            cell.fail(error, verdict);
        }
        if (!QTest::currentTestFailed())
            cell.goOn();
    } catch (const std::exception& error) {
        QFAIL(error.what());
    }
}

} // namespace trovek
