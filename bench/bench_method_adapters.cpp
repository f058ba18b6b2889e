#include "goal_table.h"
#include "support/scripted_service.h"

#include <trovek-ui/methods_qt.h>
#include <trovek-ui/methods_qt_internal.h>
#include <trovek-ui/trovekqt.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QObject>

#include <memory>
#include <vector>

using namespace trovek;
using methods::qt::MeshCreate;
using methods::qt::internal::CreateJobMethod;
using methods::qt::internal::CreateJobQObject;
using methods::qt::internal::FinishedOrFailedMethod;
using methods::qt::internal::FinishedOrFailedQObject;

namespace {

constexpr int kInFlight = 1000;

/** The answers of one kind of request, counted without a signal. */
template <typename Request>
class Bare : public Request
{
public:
    explicit Bare(int* answers)
        : m_answers(answers)
    {}
    ~Bare() override = default;

protected:
    void handleResponse(const Json::Value&) override { ++*m_answers; }
    void handleErrorResponse(const Json::Value& error) override
    {
        qFatal("The request failed: %s", error["message"].asCString());
    }

private:
    int* const m_answers;
};

template <typename Request>
std::unique_ptr<Bare<Request>> bare(int* answers)
{
    return std::make_unique<Bare<Request>>(answers);
}

std::unique_ptr<FinishedOrFailedMethod<methods::mesh_copy>> finishedOrFailed(int* answers)
{
    auto adapter = std::make_unique<FinishedOrFailedMethod<methods::mesh_copy>>();
    QObject::connect(adapter.get(), &FinishedOrFailedQObject::finished, adapter.get(),
                     [answers] { ++*answers; });
    return adapter;
}

std::unique_ptr<CreateJobMethod<methods::scan>> createJob(int* answers)
{
    auto adapter = std::make_unique<CreateJobMethod<methods::scan>>();
    QObject::connect(adapter.get(), &CreateJobQObject::jobIdReceived, adapter.get(),
                     [answers] { ++*answers; });
    return adapter;
}

std::unique_ptr<MeshCreate> meshCreate(int* answers)
{
    auto adapter = std::make_unique<MeshCreate>();
    QObject::connect(adapter.get(), &MeshCreate::meshIdReceived, adapter.get(),
                     [answers] { ++*answers; });
    return adapter;
}

/** Issues a thousand requests at once, and waits for all the answers. */
template <typename Make>
void measure(benchmark::State& state, const std::string& method, const Json::Value& answer,
             Make make)
{
    ScriptedService service;
    service.onRequest(method, [&answer](const Json::Value&) { return answer; });
    TrovekQt facade;
    facade.connectToDaemon(service.address());
    for (auto _ : state) {
        int answers = 0;
        std::vector<decltype(make(&answers))> requests;
        for (int i = 0; i < kInFlight; ++i) {
            requests.push_back(make(&answers));
            requests.back()->issue(facade);
        }
        while (answers < kInFlight)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    state.counters["us_per_answer"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kInFlight / 1e6,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/** Its handler can be called as the client does, without a wire around it. */
template <typename A>
class Opened : public A
{
public:
    using A::handleResponse;
};

template <typename A, typename Signal>
void measureHandler(benchmark::State& state, const Json::Value& answer, Signal signal)
{
    Opened<A> adapter;
    int answers = 0;
    QObject::connect(&adapter, signal, &adapter, [&answers] { ++answers; });
    for (auto _ : state)
        adapter.handleResponse(answer);
    state.SetLabel("the handler alone, with one receiver");
}

Json::Value jobAnswer()
{
    Json::Value answer;
    answer["id"] = 7;
    return answer;
}

void bareDone(benchmark::State& state)
{
    measure(state, "mesh_copy", Json::Value(), bare<methods::mesh_copy>);
    state.SetLabel("baseline: the request without signals");
}

void adapterDone(benchmark::State& state)
{
    measure(state, "mesh_copy", Json::Value(), finishedOrFailed);
    state.SetLabel("1,000 in flight");
}

void bareJob(benchmark::State& state)
{
    measure(state, "scan", jobAnswer(), bare<methods::scan>);
    state.SetLabel("baseline: the request without signals");
}

void adapterJob(benchmark::State& state)
{
    measure(state, "scan", jobAnswer(), createJob);
    state.SetLabel("1,000 in flight");
}

void bareNumber(benchmark::State& state)
{
    measure(state, "mesh_create", Json::Value(7), bare<methods::mesh_create>);
    state.SetLabel("baseline: the request without signals");
}

void adapterNumber(benchmark::State& state)
{
    measure(state, "mesh_create", Json::Value(7), meshCreate);
    state.SetLabel("1,000 in flight");
}

void handlerDone(benchmark::State& state)
{
    measureHandler<FinishedOrFailedMethod<methods::mesh_copy>>(state, Json::Value(),
                                                               &FinishedOrFailedQObject::finished);
}

void handlerJob(benchmark::State& state)
{
    measureHandler<CreateJobMethod<methods::scan>>(state, jobAnswer(),
                                                   &CreateJobQObject::jobIdReceived);
}

void handlerNumber(benchmark::State& state)
{
    measureHandler<MeshCreate>(state, Json::Value(7), &MeshCreate::meshIdReceived);
}

BENCHMARK(bareDone)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(adapterDone)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bareJob)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(adapterJob)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bareNumber)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(adapterNumber)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(handlerDone);
BENCHMARK(handlerJob);
BENCHMARK(handlerNumber);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    return runWithBaselines(
        argc, argv,
        {{"adapterDone", "bareDone"}, {"adapterJob", "bareJob"}, {"adapterNumber", "bareNumber"}});
}
