#include "goal_table.h"

#include <rpcwire/peer.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr int kCallsARun = 100;
constexpr int kTimeoutMs = 5000;

/** Serves connections in a thread of its own, by the given function. */
class Server
{
public:
    explicit Server(void (*serve)(QLocalSocket* socket))
        : m_thread(QThread::create([this, serve] { run(serve); }))
    {
        m_thread->start();
        m_listening.acquire();
    }

    ~Server()
    {
        m_thread->quit();
        m_thread->wait();
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

    void run(void (*serve)(QLocalSocket* socket))
    {
        QLocalServer server;
        QObject::connect(&server, &QLocalServer::newConnection, &server,
                         [&server, serve] { serve(server.nextPendingConnection()); });
        server.listen(path());
        m_listening.release();
        QEventLoop().exec();
    }

    QTemporaryDir m_folder;
    QSemaphore m_listening;
    const std::unique_ptr<QThread> m_thread;
};

void echoLines(QLocalSocket* socket)
{
    QObject::connect(socket, &QLocalSocket::readyRead, socket,
                     [socket] { socket->write(socket->readAll()); });
}

void answerRequests(QLocalSocket* socket)
{
    auto* const peer = new rpcwire::Peer(socket, rpcwire::Limits(), socket->parent());
    QObject::connect(
        peer, &rpcwire::Peer::requestReceived, peer,
        [peer](const rpcwire::Peer::Request& request) { peer->answer(request, request.params); });
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
        socket->write(
            "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"get_job\",\"params\":{\"id\":7}}\n");
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
    return runWithBaselines(argc, argv, {{"call", "bareLine"}});
}
