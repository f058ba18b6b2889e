#pragma once

#include "geometry/geometry_error.h"
#include "method_table.h"
#include "scanner/shape.h"

#include <json/value.h>

#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace trovek::service {

/** What a piece of work on shapes gets and gives; on a thread of the pool. */
struct ShapeTask
{
    /** In the order in which they were named. */
    std::vector<Shape> shapes;
    /** Takes the place of the first shape when the work has returned. */
    std::optional<Shape> result;
    /** To be asked often: false tells to end early by geometry::Canceled. */
    geometry::Progress progress;

    const geometry::PointCloud& cloud(std::size_t index) const { return shapes[index].cloud(); }
    const geometry::Mesh& mesh(std::size_t index) const { return shapes[index].mesh(); }
};

/** Gives the answer. */
using ShapeWork = std::function<Json::Value(ShapeTask& task)>;

enum class ShapeAccess { Reads, ChangesFirst };

/** One piece of work as it is asked for. */
struct ShapeRequest
{
    Client& client;
    /** The shape that is changed comes first. */
    std::vector<ShapeUse> uses;
    ShapeAccess access;
    ShapeWork work;
    /** Once; from the event loop, or inside cancel() and destroy(). */
    Responder respond;
    /** From the event loop; both may be empty. */
    std::function<void()> started;
    std::function<void(int percent)> progressed;
};

/**
 * The point clouds and meshes of all clients, by numbers, and the work on them.
 *
 * Whoever creates a shape owns it; to another client its number is unknown. It ends when its owner
 * destroys it or leaves. Numbers are never given twice, also not to the other kind.
 *
 * Work on the same shape is done in the order in which it was asked for, other work side by side.
 * Work that fails changes nothing.
 */
class ShapeList : public QObject
{
    Q_OBJECT

public:
    /** Of one client. */
    static constexpr int kShapesAtMost = 100;
    /** Points and triangles of one client's shapes together. */
    static constexpr std::size_t kSizeAtMost = 20'000'000;

    explicit ShapeList(std::size_t sizeAtMost = kSizeAtMost, QObject* parent = nullptr);
    /** Work that runs is canceled, and waited for; nobody is answered. */
    ~ShapeList() override;

    /** @throws JsonRpcException LimitError */
    int create(ShapeKind kind, Client& owner);

    /** @throws JsonRpcException UnknownPointCloudError, UnknownMeshError */
    void check(ShapeUse shape, const Client& client) const;

    /**
     * From now on the number is unknown. Work that was asked for before and reads the shape is
     * still done; where there is none, work that changes it is canceled.
     * @throws JsonRpcException UnknownPointCloudError, UnknownMeshError
     */
    void destroy(ShapeUse shape, const Client& client);

    /**
     * @return a number for cancel()
     * @throws JsonRpcException UnknownPointCloudError, UnknownMeshError
     */
    int run(ShapeRequest request);

    /** The answer is the error CanceledError, when it has stopped. Nothing happens when it has
     * ended. */
    void cancel(int operation);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
