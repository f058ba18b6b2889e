#include "core/method_adapter_table.h"
#include "core/method_adapter_world.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek-ui/methods_qt.h>
#include <trovek-ui/methods_qt_internal.h>
#include <trovek-ui/trovekqt.h>
#include <trovek/wire.h>

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

using namespace trovek;
using namespace trovek::methods::qt;
using trovek::methods::qt::internal::CreateJobMethod;
using trovek::methods::qt::internal::CreateJobQObject;
using trovek::methods::qt::internal::FinishedOrFailedMethod;
using trovek::methods::qt::internal::FinishedOrFailedQObject;

namespace {

using digitizer::MeshID;

/** Deletes what emits, in the slot. */
class Deleter : public QObject
{
    Q_OBJECT

public:
    int calls = 0;

    void attach(QObject* adapter, const AdapterKind& kind)
    {
        m_adapter = adapter;
        for (const QByteArray& signal : {kind.success, kind.failure})
            connect(adapter, method(*adapter, signatureOf(signal)), this,
                    method(*this, "deleteIt()"));
    }

public slots:
    void deleteIt()
    {
        ++calls;
        delete m_adapter;
    }

private:
    QPointer<QObject> m_adapter;
};

const AdapterKind& fetchedKind()
{
    QFETCH(int, kind);
    return adapterKinds().at(static_cast<std::size_t>(kind));
}

void addKindRows()
{
    QTest::addColumn<int>("kind");
    for (std::size_t i = 0; i < adapterKinds().size(); ++i)
        QTest::newRow(adapterKinds()[i].method.c_str()) << static_cast<int>(i);
}

const std::string kPrint = "print";

} // namespace

class tst_MethodAdapters : public QObject
{
    Q_OBJECT

private slots:
    void areAsManyAsTheRequests();
    void declareTheirSignals_data() { addKindRows(); }
    void declareTheirSignals();
    void areKnownByTheirNames_data() { addKindRows(); }
    void areKnownByTheirNames();
    void haveNoParent_data() { addKindRows(); }
    void haveNoParent();
    void turnAnAnswerIntoASignal_data();
    void turnAnAnswerIntoASignal();
    void failWithAnError_data() { addKindRows(); }
    void failWithAnError();
    void tellErrorsOfTheNetwork_data() { addKindRows(); }
    void tellErrorsOfTheNetwork();
    void failWhenTheLinkIsLost_data() { addKindRows(); }
    void failWhenTheLinkIsLost();
    void failWithoutALink_data() { addKindRows(); }
    void failWithoutALink();
    void mayBeDeletedInTheirSignal_data();
    void mayBeDeletedInTheirSignal();
    void areSilentWhenDeletedBeforeTheAnswer_data() { addKindRows(); }
    void areSilentWhenDeletedBeforeTheAnswer();
    void reachReceiversThroughTheQueue_data();
    void reachReceiversThroughTheQueue();
    void registerTheirSetsUnderTheSignalsText();
    void sendWhatWasSet();
    void waitByTheThousand();
    void failAfterAReceiverOfTheJobThrows();
    void touchNothingAfterAReceiverDeletesAndThrows();
};

void tst_MethodAdapters::areAsManyAsTheRequests()
{
    std::set<std::string> methods;
    for (const AdapterKind& kind : adapterKinds())
        methods.insert(kind.method);
    QCOMPARE(adapterKinds().size(), std::size_t(42));
    QCOMPARE(methods.size(), std::size_t(42));
}

void tst_MethodAdapters::declareTheirSignals()
{
    const AdapterKind& kind = fetchedKind();
    const Adapter adapter = kind.make();
    const QMetaObject& meta = *adapter.object()->metaObject();

    QByteArrayList declarations;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        declarations.append(declarationOf(meta.method(i)));
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Signal);
    }

    QCOMPARE(declarations, (QByteArrayList{kind.success, kind.failure}));
    QCOMPARE(QByteArray(meta.className()), kind.className);
    QCOMPARE(QByteArray(meta.superClass()->className()), QByteArray("QObject"));
}

void tst_MethodAdapters::areKnownByTheirNames()
{
    const AdapterKind& kind = fetchedKind();
    const Adapter adapter = kind.make();
    QObject* const object = adapter.object();

    QCOMPARE(object->qt_metacast(kind.className.constData()), static_cast<void*>(object));
    QCOMPARE(object->qt_metacast(kind.method.c_str()), adapter.request());
    QCOMPARE(object->qt_metacast("QObject"), static_cast<void*>(object));
    QVERIFY(object->inherits(kind.method.c_str()));
    QVERIFY(!object->qt_metacast("AsynchronousMethod"));
    QVERIFY(!object->qt_metacast(""));
    QVERIFY(!object->qt_metacast(nullptr));
}

void tst_MethodAdapters::haveNoParent()
{
    const Adapter adapter = fetchedKind().make();
    QVERIFY(!adapter.object()->parent());
}

void tst_MethodAdapters::turnAnAnswerIntoASignal_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("exchange");
    for (std::size_t i = 0; i < adapterKinds().size(); ++i) {
        const AdapterKind& kind = adapterKinds()[i];
        for (std::size_t j = 0; j < kind.exchanges.size(); ++j)
            QTest::addRow("%s, %s", kind.method.c_str(), kind.exchanges[j].what.c_str())
                << static_cast<int>(i) << static_cast<int>(j);
    }
}

void tst_MethodAdapters::turnAnAnswerIntoASignal()
{
    const AdapterKind& kind = fetchedKind();
    QFETCH(int, exchange);
    const Exchange& expected = kind.exchanges.at(static_cast<std::size_t>(exchange));
    TestLog log;
    std::vector<std::string> lines;
    for (const Complaint& complaint : expected.logged) {
        lines.push_back(complaint.line());
        log.expectError(complaint.line());
    }
    World world;
    world.answer(kind.method, expected.answer);
    const Adapter adapter = kind.make();
    const Emissions emissions(*adapter.object(), kind);

    adapter.issue(world.facade);
    QVERIFY(world.service.waitForRequest(kind.method));
    QCOMPARE(emissions.texts(), QStringList());

    QTRY_COMPARE(emissions.texts(), QStringList(expected.emitted));
    QCOMPARE(log.messages(Log::Error), lines);
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.severity != Log::Error)
            continue;
        QCOMPARE(entry.file, kind.logUnit);
        QVERIFY2(entry.function.find("::handleResponse(const Json::Value&)") != std::string::npos,
                 entry.function.c_str());
    }

    world.facade.disconnectFromDaemon();
    QCoreApplication::processEvents();
    QCOMPARE(emissions.texts(), QStringList(expected.emitted));
    QCOMPARE(world.service.requests(kind.method).size(), std::size_t(1));
}

void tst_MethodAdapters::failWithAnError()
{
    const AdapterKind& kind = fetchedKind();
    TestLog log;
    World world;
    world.service.failNext(kind.method, wire::makeError("SomeError", "It burns"));
    const Adapter adapter = kind.make();
    const Emissions emissions(*adapter.object(), kind);

    adapter.issue(world.facade);

    QTRY_COMPARE(emissions.texts(), QStringList(kind.failed));
}

void tst_MethodAdapters::tellErrorsOfTheNetwork()
{
    const AdapterKind& kind = fetchedKind();
    Json::Value nested;
    nested["cause"]["cause"]["text"] = "<urlopen error timed out>";
    const std::vector<JsonRpcException> errors = {
        JsonRpcException("<urlopen error timed out>", Json::Value(), -32000),
        JsonRpcException("It burns", nested, -32000),
    };
    for (const JsonRpcException& error : errors) {
        TestLog log;
        World world;
        world.service.failNext(kind.method, error);
        const Adapter adapter = kind.make();
        const Emissions emissions(*adapter.object(), kind);

        adapter.issue(world.facade);

        QTRY_COMPARE(emissions.texts(), QStringList(kind.failedByInternet));
    }
}

void tst_MethodAdapters::failWhenTheLinkIsLost()
{
    const AdapterKind& kind = fetchedKind();
    TestLog log;
    World world;
    world.service.dropConnectionOn(kind.method);
    const Adapter adapter = kind.make();
    const Emissions emissions(*adapter.object(), kind);

    adapter.issue(world.facade);

    QTRY_COMPARE(emissions.texts(), QStringList(kind.failed));
}

void tst_MethodAdapters::failWithoutALink()
{
    const AdapterKind& kind = fetchedKind();
    TestLog log;
    TrovekQt facade;
    const Adapter adapter = kind.make();
    const Emissions emissions(*adapter.object(), kind);

    adapter.issue(facade);
    QCOMPARE(emissions.texts(), QStringList());

    QTRY_COMPARE(emissions.texts(), QStringList(kind.failed));
}

void tst_MethodAdapters::mayBeDeletedInTheirSignal_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("exchange");
    for (std::size_t i = 0; i < adapterKinds().size(); ++i) {
        const AdapterKind& kind = adapterKinds()[i];
        const int last = static_cast<int>(kind.exchanges.size()) - 1;
        QTest::addRow("%s, a good answer", kind.method.c_str()) << static_cast<int>(i) << 0;
        QTest::addRow("%s, another", kind.method.c_str()) << static_cast<int>(i) << last;
        QTest::addRow("%s, an error", kind.method.c_str()) << static_cast<int>(i) << -1;
    }
}

void tst_MethodAdapters::mayBeDeletedInTheirSignal()
{
    const AdapterKind& kind = fetchedKind();
    QFETCH(int, exchange);
    TestLog log;
    World world;
    if (exchange < 0) {
        world.service.failNext(kind.method, wire::makeError("SomeError", "It burns"));
    } else {
        const Exchange& answered = kind.exchanges.at(static_cast<std::size_t>(exchange));
        world.answer(kind.method, answered.answer);
        for (const Complaint& complaint : answered.logged)
            log.expectError(complaint.line());
    }
    const Adapter adapter = kind.make();
    Deleter deleter;
    deleter.attach(adapter.object(), kind);

    adapter.issue(world.facade);

    QTRY_VERIFY(!adapter.object());
    QCOMPARE(deleter.calls, 1);
    QVERIFY(world.facade.isConnected());
}

void tst_MethodAdapters::areSilentWhenDeletedBeforeTheAnswer()
{
    const AdapterKind& kind = fetchedKind();
    TestLog log;
    World world;
    world.answer(kind.method, kind.exchanges.front().answer);
    const Adapter adapter = kind.make();
    const Emissions emissions(*adapter.object(), kind);
    adapter.issue(world.facade);
    QVERIFY(world.service.waitForRequest(kind.method));
    delete adapter.object();

    // Answers come in their order, so the one to the deleted request has passed.
    world.answer(kind.method, kind.exchanges.front().answer);
    const Adapter second = kind.make();
    const Emissions later(*second.object(), kind);
    second.issue(world.facade);

    QTRY_COMPARE(later.texts(), QStringList(kind.exchanges.front().emitted));
    QCOMPARE(emissions.texts(), QStringList());
}

void tst_MethodAdapters::reachReceiversThroughTheQueue_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("fails");
    for (std::size_t i = 0; i < adapterKinds().size(); ++i) {
        const char* const name = adapterKinds()[i].method.c_str();
        QTest::addRow("%s, success", name) << static_cast<int>(i) << false;
        QTest::addRow("%s, failure", name) << static_cast<int>(i) << true;
    }
}

void tst_MethodAdapters::reachReceiversThroughTheQueue()
{
    const AdapterKind& kind = fetchedKind();
    QFETCH(bool, fails);
    TestLog log;
    World world;
    if (fails)
        world.service.failNext(kind.method, wire::makeError("SomeError", "It burns"));
    else
        world.answer(kind.method, kind.exchanges.front().answer);
    const Adapter adapter = kind.make();
    const Emissions direct(*adapter.object(), kind);
    // Another of its class has signals that take the same arguments.
    const Adapter relay = kind.make();
    const Emissions relayed(*relay.object(), kind);
    for (const QByteArray& declaration : {kind.success, kind.failure}) {
        const QByteArray signature = signatureOf(declaration);
        QVERIFY(QObject::connect(adapter.object(), method(*adapter.object(), signature),
                                 relay.object(), method(*relay.object(), signature),
                                 Qt::QueuedConnection));
    }
    Deleter deleter;
    deleter.attach(adapter.object(), kind);

    adapter.issue(world.facade);

    // What was emitted arrives although the emitter is gone.
    const QString expected = fails ? kind.failed : kind.exchanges.front().emitted;
    QTRY_COMPARE(relayed.texts(), QStringList(expected));
    QCOMPARE(direct.texts(), QStringList(expected));
    QVERIFY(!adapter.object());
}

void tst_MethodAdapters::registerTheirSetsUnderTheSignalsText()
{
    const GetMachineVersions versions;
    const GetUploadableMachines machines;

    QCOMPARE(QMetaType::type("std::set<FirmwareVersion>"),
             qMetaTypeId<std::set<FirmwareVersion>>());
    QCOMPARE(QMetaType::type("std::set<std::string>"), qMetaTypeId<std::set<std::string>>());
}

void tst_MethodAdapters::sendWhatWasSet()
{
    TestLog log;
    World world;
    world.answer("mesh_copy", "null");
    FinishedOrFailedMethod<methods::mesh_copy> copy;
    copy.setId(digitizer::MeshID(5));
    copy.setSource(digitizer::MeshID(3));
    QSignalSpy finished(&copy, &FinishedOrFailedQObject::finished);

    copy.issue(world.facade);

    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(rpcwire::toJsonLine(world.service.lastRequest("mesh_copy")),
             std::string(R"({"id":5,"source":3})"));
}

void tst_MethodAdapters::waitByTheThousand()
{
    TestLog log;
    World world;
    world.service.onRequest("mesh_create", [](const Json::Value&) { return Json::Value(7); });
    constexpr int kInFlight = 1000;
    int received = 0;
    std::vector<std::unique_ptr<MeshCreate>> adapters;
    for (int i = 0; i < kInFlight; ++i) {
        adapters.push_back(std::make_unique<MeshCreate>());
        connect(adapters.back().get(), &MeshCreate::meshIdReceived, this, [&received](MeshID id) {
            if (id == MeshID(7))
                ++received;
        });
        adapters.back()->issue(world.facade);
    }
    QCOMPARE(received, 0);

    QTRY_COMPARE_WITH_TIMEOUT(received, kInFlight, 60000);
}

void tst_MethodAdapters::failAfterAReceiverOfTheJobThrows()
{
    TestLog log;
    log.expectError("No place for the job");
    World world;
    world.answer(kPrint, R"({"id": 12})");
    CreateJobMethod<methods::print> print;
    QSignalSpy failed(&print, &CreateJobQObject::failed);
    connect(&print, &CreateJobQObject::jobIdReceived, this,
            [] { throw std::runtime_error("No place for the job"); });

    print.issue(world.facade);

    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(log.messages(Log::Error).size(), std::size_t(1));
    QVERIFY(world.facade.isConnected());
}

void tst_MethodAdapters::touchNothingAfterAReceiverDeletesAndThrows()
{
    TestLog log;
    log.expectError("No place for the job");
    World world;
    world.answer(kPrint, R"({"id": 12})");
    const QPointer<CreateJobMethod<methods::print>> print(new CreateJobMethod<methods::print>);
    QSignalSpy failed(print.data(), &CreateJobQObject::failed);
    connect(print.data(), &CreateJobQObject::jobIdReceived, this, [print] {
        delete print.data();
        throw std::runtime_error("No place for the job");
    });

    print->issue(world.facade);

    QTRY_VERIFY(!print);
    QCOMPARE(failed.count(), 0);
    QVERIFY(world.facade.isConnected());
}

QTEST_GUILESS_MAIN(tst_MethodAdapters)
#include "tst_method_adapters.moc"
