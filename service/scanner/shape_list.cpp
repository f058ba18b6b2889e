#include "scanner/shape_list.h"

#include "background_task.h"
#include "scanner/work_error.h"

#include <trovek/wire.h>

#include <QThread>

#include <algorithm>
#include <cmath>
#include <limits>
#include <list>
#include <map>
#include <set>
#include <stdexcept>

namespace trovek::service {

namespace {

const char* nameOf(ShapeKind kind)
{
    return kind == ShapeKind::PointCloud ? "point cloud" : "mesh";
}

JsonRpcException unknown(ShapeUse use)
{
    return wire::makeError(use.kind == ShapeKind::PointCloud ? wire::error::kUnknownPointCloud
                                                             : wire::error::kUnknownMesh,
                           std::string("No such ") + nameOf(use.kind) + ": " +
                               std::to_string(use.id));
}

JsonRpcException canceled()
{
    return wire::makeError(wire::error::kCanceled, "Canceled");
}

struct Owned
{
    Shape shape;
    const Client* owner;
    /** Nobody knows its number any more; work that was asked for before may still need it. */
    bool forgotten = false;
};

struct Operation
{
    int number;
    const Client* client;
    std::vector<ShapeUse> uses;
    ShapeAccess access;
    ShapeWork work;
    Responder respond;
    std::function<void()> started;
    std::function<void(int)> progressed;
    bool canceled = false;

    // The pool's thread has these to itself while it runs.
    ShapeTask task;
    Json::Value result;
    std::optional<JsonRpcException> error;
    std::unique_ptr<BackgroundTask> background;

    bool isRunning() const { return background != nullptr; }
    bool changes(int id) const
    {
        return access == ShapeAccess::ChangesFirst && uses.front().id == id;
    }
    bool usesShape(int id) const
    {
        return std::any_of(uses.begin(), uses.end(), [id](ShapeUse use) { return use.id == id; });
    }
    /** What the shape holds goes somewhere else. */
    bool takesFrom(int id) const
    {
        const auto first = uses.begin() + (access == ShapeAccess::ChangesFirst ? 1 : 0);
        return std::any_of(first, uses.end(), [id](ShapeUse use) { return use.id == id; });
    }

    void run(BackgroundTask::Control& control)
    {
        task.progress = [&control](double done) {
            control.setProgress(static_cast<int>(std::floor(done * 100)));
            return !control.isCanceled();
        };
        error = errorOfWork([this] { result = work(task); });
    }
};

} // namespace

class ShapeList::Private
{
public:
    Private(ShapeList& list, std::size_t most)
        : q(list)
        , sizeAtMost(most)
    {
        pool.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
    }

    Owned& find(ShapeUse use, const Client& client);
    void follow(Client& client);
    void leave(const Client* client);
    void cancel(Operation& operation);
    void sweep();

    void scheduleLater();
    void schedule();
    Operation* next() const;
    void start(Operation& operation);
    void finish(Operation& operation);
    void keepResult(Operation& operation);
    std::unique_ptr<Operation> take(const Operation& operation);
    std::size_t sizeOf(const Client* client) const;
    std::vector<Operation*> operationsIf(std::function<bool(const Operation&)> matches) const;

    ShapeList& q;
    const std::size_t sizeAtMost;
    // Its own, so that prints and exports need not wait for a reconstruction.
    QThreadPool pool;
    std::map<int, Owned> shapes;
    std::set<const Client*> clients;
    /** In the order in which they were asked for. */
    std::list<std::unique_ptr<Operation>> operations;
    std::vector<std::unique_ptr<BackgroundTask>> retired;
    int nextShape = 1;
    int nextOperation = 1;
};

Owned& ShapeList::Private::find(ShapeUse use, const Client& client)
{
    const auto found = shapes.find(use.id);
    if (found == shapes.end() || found->second.forgotten || found->second.owner != &client ||
        found->second.shape.kind() != use.kind)
        throw unknown(use);
    return found->second;
}

void ShapeList::Private::follow(Client& client)
{
    if (!clients.insert(&client).second)
        return;
    connect(&client, &Client::gone, &q, [this, left = &client] { leave(left); });
}

void ShapeList::Private::leave(const Client* client)
{
    clients.erase(client);
    for (auto& [id, owned] : shapes)
        owned.forgotten = owned.forgotten || owned.owner == client;
    for (Operation* operation :
         operationsIf([client](const Operation& o) { return o.client == client; }))
        cancel(*operation);
    sweep();
}

void ShapeList::Private::cancel(Operation& operation)
{
    if (operation.isRunning()) {
        operation.canceled = true;
        operation.background->cancel();
        return;
    }
    take(operation)->respond.error(canceled());
    scheduleLater();
}

/** Forgotten shapes go when nothing needs them. */
void ShapeList::Private::sweep()
{
    for (auto it = shapes.begin(); it != shapes.end();) {
        const int id = it->first;
        const bool isNeeded =
            std::any_of(operations.begin(), operations.end(),
                        [id](const auto& operation) { return operation->usesShape(id); });
        it = it->second.forgotten && !isNeeded ? shapes.erase(it) : std::next(it);
    }
}

void ShapeList::Private::scheduleLater()
{
    QMetaObject::invokeMethod(
        &q, [this] { schedule(); }, Qt::QueuedConnection);
}

void ShapeList::Private::schedule()
{
    while (Operation* const operation = next())
        start(*operation);
}

/**
 * The first one that waits for no earlier work on its shapes. Of several clients it is one of who
 * has the least running, so that nobody waits for all that another has asked for.
 */
Operation* ShapeList::Private::next() const
{
    std::map<const Client*, int> running;
    int allRunning = 0;
    for (const auto& operation : operations) {
        if (operation->isRunning()) {
            ++running[operation->client];
            ++allRunning;
        }
    }
    if (allRunning >= pool.maxThreadCount())
        return nullptr;

    Operation* best = nullptr;
    std::set<int> used;
    std::set<int> changed;
    for (const auto& operation : operations) {
        const bool waits =
            std::any_of(operation->uses.begin(), operation->uses.end(), [&](ShapeUse use) {
                return changed.count(use.id) > 0 ||
                       (operation->changes(use.id) && used.count(use.id) > 0);
            });
        if (!operation->isRunning() && !waits &&
            (best == nullptr || running[operation->client] < running[best->client]))
            best = operation.get();
        for (const ShapeUse use : operation->uses) {
            used.insert(use.id);
            if (operation->changes(use.id))
                changed.insert(use.id);
        }
    }
    return best;
}

void ShapeList::Private::start(Operation& operation)
{
    for (const ShapeUse use : operation.uses)
        operation.task.shapes.push_back(shapes.at(use.id).shape);
    operation.background = std::make_unique<BackgroundTask>(
        pool, [&operation](BackgroundTask::Control& control) { operation.run(control); });
    connect(operation.background.get(), &BackgroundTask::progressed, &q, [&operation](int percent) {
        if (operation.progressed)
            operation.progressed(percent);
    });
    connect(operation.background.get(), &BackgroundTask::ended, &q,
            [this, &operation] { finish(operation); });
    operation.background->start();
    if (operation.started)
        operation.started();
}

void ShapeList::Private::finish(Operation& operation)
{
    const std::unique_ptr<Operation> owned = take(operation);
    // The task is inside its own signal, and must be gone before the pool.
    retired.push_back(std::move(owned->background));
    QMetaObject::invokeMethod(
        &q, [this] { retired.clear(); }, Qt::QueuedConnection);
    if (owned->canceled)
        owned->error = canceled();
    if (!owned->error && owned->task.result)
        keepResult(*owned);
    sweep();
    schedule();
    if (owned->error)
        owned->respond.error(*owned->error);
    else
        owned->respond.result(owned->result);
}

void ShapeList::Private::keepResult(Operation& operation)
{
    Owned& changed = shapes.at(operation.uses.front().id);
    const std::size_t others = sizeOf(changed.owner) - changed.shape.size();
    if (others + operation.task.result->size() > sizeAtMost) {
        operation.error = wire::makeError(
            wire::error::kLimit, "All point clouds and meshes of a client together may have " +
                                     std::to_string(sizeAtMost) + " points and triangles");
        return;
    }
    changed.shape = *operation.task.result;
}

std::unique_ptr<Operation> ShapeList::Private::take(const Operation& operation)
{
    const auto found =
        std::find_if(operations.begin(), operations.end(),
                     [&operation](const auto& other) { return other.get() == &operation; });
    std::unique_ptr<Operation> taken = std::move(*found);
    operations.erase(found);
    return taken;
}

std::size_t ShapeList::Private::sizeOf(const Client* client) const
{
    std::size_t size = 0;
    for (const auto& [id, owned] : shapes)
        size += owned.owner == client ? owned.shape.size() : 0;
    return size;
}

std::vector<Operation*>
ShapeList::Private::operationsIf(std::function<bool(const Operation&)> matches) const
{
    std::vector<Operation*> found;
    for (const auto& operation : operations) {
        if (matches(*operation))
            found.push_back(operation.get());
    }
    return found;
}

ShapeList::ShapeList(std::size_t sizeAtMost, QObject* parent)
    : QObject(parent)
    , d(new Private(*this, sizeAtMost))
{}

ShapeList::~ShapeList()
{
    // All at once; destroying them waits for one after the other.
    for (const auto& operation : d->operations) {
        if (operation->isRunning())
            operation->background->cancel();
    }
}

int ShapeList::create(ShapeKind kind, Client& owner)
{
    const auto count =
        std::count_if(d->shapes.begin(), d->shapes.end(),
                      [&owner](const auto& shape) { return shape.second.owner == &owner; });
    if (count >= kShapesAtMost) {
        throw wire::makeError(wire::error::kLimit, "A client may have " +
                                                       std::to_string(kShapesAtMost) +
                                                       " point clouds and meshes");
    }
    if (d->nextShape == std::numeric_limits<int>::max())
        throw wire::makeError(wire::error::kLimit, "There are no numbers left");
    d->follow(owner);
    d->shapes.emplace(d->nextShape, Owned{Shape(kind), &owner});
    return d->nextShape++;
}

void ShapeList::check(ShapeUse shape, const Client& client) const
{
    d->find(shape, client);
}

void ShapeList::destroy(ShapeUse shape, const Client& client)
{
    d->find(shape, client).forgotten = true;
    const auto uses = [id = shape.id](const Operation& operation) {
        return operation.usesShape(id);
    };
    const std::vector<Operation*> users = d->operationsIf(uses);
    if (std::none_of(users.begin(), users.end(),
                     [&](const Operation* operation) { return operation->takesFrom(shape.id); })) {
        for (Operation* operation : users)
            d->cancel(*operation);
    }
    d->sweep();
}

int ShapeList::run(ShapeRequest request)
{
    for (const ShapeUse use : request.uses)
        d->find(use, request.client);
    auto operation = std::make_unique<Operation>();
    operation->number = d->nextOperation++;
    operation->client = &request.client;
    operation->uses = std::move(request.uses);
    operation->access = request.access;
    operation->work = std::move(request.work);
    operation->respond = std::move(request.respond);
    operation->started = std::move(request.started);
    operation->progressed = std::move(request.progressed);
    const int number = operation->number;
    d->operations.push_back(std::move(operation));
    d->scheduleLater();
    return number;
}

void ShapeList::cancel(int operation)
{
    for (Operation* found :
         d->operationsIf([operation](const Operation& other) { return other.number == operation; }))
        d->cancel(*found);
    d->sweep();
}

} // namespace trovek::service
