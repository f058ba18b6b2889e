#include <rpcwire/peer.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr int kCallsARun = 100;
constexpr int kTimeoutMs = 5000;

/** Answers each connection in a thread of its own, by the given function. */
class Server
{
public:
    explicit Server(void (*serve)(QLocalSocket* socket))
    {
        m_server.moveToThread(&m_thread);
        QObject::connect(&m_server, &QLocalServer::newConnection, &m_server,
                         [this, serve] { serve(m_server.nextPendingConnection()); });
        m_thread.start();
        QMetaObject::invokeMethod(
            &m_server, [this] { m_server.listen(path()); }, Qt::BlockingQueuedConnection);
    }

    ~Server()
    {
        QMetaObject::invokeMethod(
            &m_server, [this] { m_server.close(); }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    std::unique_ptr<QLocalSocket> connection() const
    {
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(path());
        if (!socket->waitForConnected(kTimeoutMs))
            qFatal("The benchmark's server is not there");
        return socket;
    }

private:
    QString path() const { return m_folder.filePath(QStringLiteral("bench")); }

    QTemporaryDir m_folder;
    QLocalServer m_server;
    QThread m_thread;
};

void echoLines(QLocalSocket* socket)
{
    QObject::connect(socket, &QLocalSocket::readyRead, socket,
                     [socket] { socket->write(socket->readAll()); });
}

void answerRequests(QLocalSocket* socket)
{
    auto* const peer = new rpcwire::Peer(socket);
    QObject::connect(peer, &rpcwire::Peer::requestReceived, peer,
                     [peer](const rpcwire::Peer::Request& request) {
                         peer->answer(request, request.params);
                     });
}

/** Runs hundreds of exchanges and shows the median and the slowest but one of a hundred. */
template <typename Exchange>
void measure(benchmark::State& state, Exchange exchange)
{
    std::vector<double> microseconds;
    for (auto _ : state) {
        for (int i = 0; i < kCallsARun; ++i) {
            const auto start = std::chrono::steady_clock::now();
            exchange();
            const std::chrono::duration<double, std::micro> took =
                std::chrono::steady_clock::now() - start;
            microseconds.push_back(took.count());
        }
    }
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["median_us"] = microseconds[microseconds.size() / 2];
    state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
}

void bareLine(benchmark::State& state)
{
    const Server server(echoLines);
    const std::unique_ptr<QLocalSocket> socket = server.connection();
    measure(state, [&socket] {
        socket->write("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"get_job\",\"params\":{\"id\":7}}\n");
        while (!socket->canReadLine())
            socket->waitForReadyRead(kTimeoutMs);
        socket->readLine();
    });
    state.SetLabel("baseline: the same line echoed");
}

void call(benchmark::State& state)
{
    const Server server(answerRequests);
    rpcwire::Peer peer(server.connection().release());
    Json::Value params;
    params["id"] = 7;
    measure(state, [&] { peer.call("get_job", params, kTimeoutMs); });
    state.SetLabel("goal: median 50 us, 99 % 200 us");
}

BENCHMARK(bareLine)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(call)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
