#include "scanner/calibration_solver.h"

#include <Eigen/Dense>
#include <unsupported/Eigen/NonLinearOptimization>
#include <unsupported/Eigen/NumericalDiff>

#include <cmath>
#include <functional>

namespace trovek::service {

using geometry::RigidTransform;
using geometry::Vector;

namespace {

constexpr std::size_t kViewsAtLeast = 4;
/** Root of the mean square; far above what noise does, far below a board that is taken wrongly. */
constexpr double kPixelsOff = 0.3;
constexpr double kMillimetresOff = 0.5;
constexpr double kRadiansOff = 0.02;

Eigen::Vector3d toEigen(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

Vector fromEigen(const Eigen::Vector3d& vector)
{
    return {vector.x(), vector.y(), vector.z()};
}

Eigen::Matrix3d rotationOf(const RigidTransform& transform)
{
    Eigen::Matrix3d matrix;
    for (int row = 0; row < 3; ++row)
        matrix.row(row) = toEigen(transform.rotation[std::size_t(row)]).transpose();
    return matrix;
}

RigidTransform makeTransform(const Eigen::Matrix3d& rotation, const Eigen::Vector3d& translation)
{
    RigidTransform transform;
    for (int row = 0; row < 3; ++row)
        transform.rotation[std::size_t(row)] = fromEigen(rotation.row(row).transpose());
    transform.translation = fromEigen(translation);
    return transform;
}

/** Six numbers: the turn as an axis as long as its angle, then the move. */
template <typename Numbers>
RigidTransform transformOf(const Numbers& six)
{
    const Eigen::Vector3d turn(six[0], six[1], six[2]);
    const double angle = turn.norm();
    const Eigen::Matrix3d rotation = angle > 1e-12
                                         ? Eigen::AngleAxisd(angle, turn / angle).toRotationMatrix()
                                         : Eigen::Matrix3d(Eigen::Matrix3d::Identity());
    return makeTransform(rotation, {six[3], six[4], six[5]});
}

Eigen::Matrix<double, 6, 1> numbersOf(const RigidTransform& transform)
{
    const Eigen::AngleAxisd turn(rotationOf(transform));
    Eigen::Matrix<double, 6, 1> six;
    six << turn.angle() * turn.axis(), toEigen(transform.translation);
    return six;
}

/**
 * Where the middle of a dot's picture is. That is not the picture of its middle: the nearer half of
 * the dot looks larger. To second order it lies twice as far away as the middle of four places on
 * the dot's rim.
 */
std::optional<PixelPoint> projectDot(const CameraModel& camera, const RigidTransform& board,
                                     int column, int row)
{
    const Vector middle = board::middle(column, row);
    const double radius = board::radius(column, row);
    const auto center = camera.project(board.point(middle));
    if (!center)
        return std::nullopt;
    PixelPoint rim;
    for (const Vector& direction :
         {Vector{1, 0, 0}, Vector{-1, 0, 0}, Vector{0, 1, 0}, Vector{0, -1, 0}}) {
        const auto place = camera.project(board.point(middle + radius * direction));
        if (!place)
            return std::nullopt;
        rim.x += place->x / 4;
        rim.y += place->y / 4;
    }
    return PixelPoint{2 * rim.x - center->x, 2 * rim.y - center->y};
}

/** How far all dots of a view are from where they should be seen; two numbers for each. */
void compare(const CameraModel& camera, const RigidTransform& board, const BoardDots& dots,
             double* differences)
{
    constexpr double kNotSeen = 1e4;
    for (int row = 0; row < board::kRows; ++row) {
        for (int column = 0; column < board::kColumns; ++column) {
            const std::size_t index = dotIndex(column, row);
            const auto expected = projectDot(camera, board, column, row);
            differences[2 * index] = expected ? expected->x - dots[index].x : kNotSeen;
            differences[2 * index + 1] = expected ? expected->y - dots[index].y : kNotSeen;
        }
    }
}

/** A problem in the form that Eigen's Levenberg-Marquardt takes. */
struct LeastSquares
{
    using Scalar = double;
    using InputType = Eigen::VectorXd;
    using ValueType = Eigen::VectorXd;
    using JacobianType = Eigen::MatrixXd;
    enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };

    int inputs() const { return inputCount; }
    int values() const { return valueCount; }
    int operator()(const Eigen::VectorXd& input, Eigen::VectorXd& value) const
    {
        evaluate(input, value);
        return 0;
    }

    int inputCount;
    int valueCount;
    std::function<void(const Eigen::VectorXd&, Eigen::VectorXd&)> evaluate;
};

/** @return the root of the mean square of what is left */
double minimize(const LeastSquares& problem, Eigen::VectorXd* input)
{
    using Differentiable = Eigen::NumericalDiff<LeastSquares, Eigen::Central>;
    Differentiable differentiable(problem);
    Eigen::LevenbergMarquardt<Differentiable> solver(differentiable);
    solver.parameters.maxfev = 100;
    solver.minimize(*input);
    Eigen::VectorXd rest(problem.valueCount);
    problem.evaluate(*input, rest);
    return std::sqrt(rest.squaredNorm() / problem.valueCount);
}

/** A first guess of where the board is: the plane picture of its dots, by linear equations. */
RigidTransform guessBoard(const CameraModel& camera, const BoardDots& dots)
{
    Eigen::MatrixXd equations(2 * board::kDots, 9);
    equations.setZero();
    // In numbers of about 1, which the equations need to be well posed.
    const double scale = board::kWidth / 2;
    for (int row = 0; row < board::kRows; ++row) {
        for (int column = 0; column < board::kColumns; ++column) {
            const std::size_t index = dotIndex(column, row);
            const Vector seen = camera.viewDirection(dots[index]);
            const Eigen::RowVector3d place(board::middle(column, row).x / scale,
                                           board::middle(column, row).y / scale, 1);
            const auto at = Eigen::Index(2 * index);
            equations.block<1, 3>(at, 0) = place;
            equations.block<1, 3>(at, 6) = -seen.x * place;
            equations.block<1, 3>(at + 1, 3) = place;
            equations.block<1, 3>(at + 1, 6) = -seen.y * place;
        }
    }
    const Eigen::MatrixXd right =
        Eigen::JacobiSVD<Eigen::MatrixXd>(equations, Eigen::ComputeThinV).matrixV();
    const Eigen::VectorXd solution = right.col(8);
    Eigen::Matrix3d plane;
    for (int row = 0; row < 3; ++row)
        plane.row(row) = solution.segment<3>(3 * row).transpose();
    plane.col(0) /= scale;
    plane.col(1) /= scale;
    // The board is ahead of the camera.
    plane /= (plane(2, 2) < 0 ? -1 : 1) * std::sqrt(plane.col(0).norm() * plane.col(1).norm());
    Eigen::Matrix3d turn;
    turn << plane.col(0), plane.col(1), plane.col(0).cross(plane.col(1));
    const Eigen::JacobiSVD<Eigen::Matrix3d> parts(turn, Eigen::ComputeFullU | Eigen::ComputeFullV);
    return makeTransform(parts.matrixU() * parts.matrixV().transpose(), plane.col(2));
}

/** Five numbers of the camera, to be found near those of the design. */
constexpr int kCameraNumbers = 5;
CameraModel cameraOf(const CameraModel& design, const Eigen::VectorXd& input)
{
    CameraModel camera = design;
    camera.focalX = input[0];
    camera.focalY = input[1];
    camera.centerX = input[2];
    camera.centerY = input[3];
    camera.distortion = input[4];
    return camera;
}

/** What the turns from each board to each other have in common. @throws CalibrationError */
Eigen::Vector3d meanAxis(const std::vector<RigidTransform>& boards,
                         const std::vector<double>& angles)
{
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (std::size_t i = 0; i < boards.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const Eigen::AngleAxisd turn(
                Eigen::Matrix3d(rotationOf(boards[i]) * rotationOf(boards[j]).transpose()));
            const double expected = angles[i] - angles[j];
            if (std::abs(turn.angle() - std::abs(expected)) > kRadiansOff)
                throw CalibrationError("The board did not turn as the table does");
            // Long turns tell more of the axis than short ones.
            sum += (expected > 0 ? 1 : -1) * turn.angle() * turn.angle() * turn.axis();
        }
    }
    return sum.normalized();
}

} // namespace

CameraModel solveCamera(const CameraModel& design, const std::vector<BoardDots>& views)
{
    if (views.size() < kViewsAtLeast) {
        throw CalibrationError("Only " + std::to_string(views.size()) +
                               " pictures show the whole board; at least " +
                               std::to_string(kViewsAtLeast) + " must");
    }
    const auto count = static_cast<int>(views.size());
    LeastSquares problem;
    problem.inputCount = kCameraNumbers + 6 * count;
    problem.valueCount = 2 * board::kDots * count;
    problem.evaluate = [&](const Eigen::VectorXd& input, Eigen::VectorXd& value) {
        const CameraModel camera = cameraOf(design, input);
        for (int i = 0; i < count; ++i) {
            compare(camera, transformOf(input.segment<6>(kCameraNumbers + 6 * i)),
                    views[std::size_t(i)], value.data() + 2 * board::kDots * i);
        }
    };
    Eigen::VectorXd input(problem.inputCount);
    input.head<kCameraNumbers>() << design.focalX, design.focalY, design.centerX, design.centerY,
        design.distortion;
    for (int i = 0; i < count; ++i) {
        input.segment<6>(kCameraNumbers + 6 * i) =
            numbersOf(guessBoard(design, views[std::size_t(i)]));
    }
    if (const double off = minimize(problem, &input); !(off < kPixelsOff)) {
        throw CalibrationError("The pictures do not fit one camera: " + std::to_string(off) +
                               " pixels are left");
    }
    return cameraOf(design, input);
}

RigidTransform solveBoard(const CameraModel& camera, const BoardDots& dots)
{
    LeastSquares problem;
    problem.inputCount = 6;
    problem.valueCount = 2 * board::kDots;
    problem.evaluate = [&](const Eigen::VectorXd& input, Eigen::VectorXd& value) {
        compare(camera, transformOf(input), dots, value.data());
    };
    Eigen::VectorXd input = numbersOf(guessBoard(camera, dots));
    if (const double off = minimize(problem, &input); !(off < kPixelsOff)) {
        throw CalibrationError("A picture does not fit the camera: " + std::to_string(off) +
                               " pixels are left");
    }
    return transformOf(input);
}

std::vector<Vector> pointsOnBoard(const CameraModel& camera, const RigidTransform& boardToCamera,
                                  const std::vector<PixelPoint>& line)
{
    const Vector front = boardToCamera.direction({0, 0, 1});
    const double distance = dot(front, boardToCamera.translation);
    const RigidTransform toBoard = boardToCamera.inverse();
    std::vector<Vector> points;
    for (const PixelPoint& place : line) {
        const Vector view = camera.viewDirection(place);
        const Vector point = distance / dot(front, view) * view;
        const Vector onBoard = toBoard.point(point);
        if (board::brightness(onBoard.x, onBoard.y))
            points.push_back(point);
    }
    return points;
}

LaserPlane solveLaser(const std::vector<Vector>& points)
{
    constexpr std::size_t kPointsAtLeast = 50;
    // Across the sheet's two directions, millimetres.
    constexpr double kWideAtLeast = 5;
    if (points.size() < kPointsAtLeast)
        throw CalibrationError("The laser is not seen on the board");
    Eigen::MatrixXd matrix(3, Eigen::Index(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i)
        matrix.col(Eigen::Index(i)) = toEigen(points[i]);
    const Eigen::Vector3d middle = matrix.rowwise().mean();
    matrix.colwise() -= middle;
    // The directions of the points' spread, from the least to the largest.
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> spread(
        Eigen::Matrix3d(matrix * matrix.transpose() / double(points.size())));
    if (!(spread.eigenvalues()[1] > kWideAtLeast * kWideAtLeast))
        throw CalibrationError("The laser is seen on one line only: the board must be turned");
    if (!(spread.eigenvalues()[0] < kMillimetresOff * kMillimetresOff))
        throw CalibrationError("The laser's line does not lie on one sheet of light");
    Eigen::Vector3d normal = spread.eigenvectors().col(0);
    if (normal.x() < 0)
        normal = -normal;
    return {fromEigen(normal), normal.dot(middle)};
}

Turntable solveTurntable(const std::vector<RigidTransform>& boards,
                         const std::vector<double>& angles)
{
    if (boards.size() < kViewsAtLeast) {
        throw CalibrationError("Only " + std::to_string(boards.size()) +
                               " pictures show the whole board on the turntable; at least " +
                               std::to_string(kViewsAtLeast) + " must");
    }
    const Eigen::Vector3d axis = meanAxis(boards, angles);
    // A point of the axis is the same in all pictures: its place is R p + t with one p of the
    // board. Along the axis nothing is said; there it stays where the board's origin is.
    Eigen::Matrix3d sum = 1e-6 * axis * axis.transpose();
    Eigen::Vector3d target = Eigen::Vector3d::Zero();
    for (std::size_t i = 0; i < boards.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const Eigen::Matrix3d back =
                Eigen::AngleAxisd(angles[i] - angles[j], axis).toRotationMatrix();
            const Eigen::Matrix3d equation = Eigen::Matrix3d::Identity() - back;
            const Eigen::Vector3d right =
                toEigen(boards[i].translation) - back * toEigen(boards[j].translation);
            sum += equation.transpose() * equation;
            target += equation.transpose() * right;
        }
    }
    Eigen::Vector3d origin = sum.ldlt().solve(target);

    // How high the platform is: the board's lower edge stands on it.
    const Vector lowerEdge{0, -board::kMargin, 0};
    double height = 0;
    double off = 0;
    for (std::size_t i = 0; i < boards.size(); ++i) {
        height += axis.dot(toEigen(boards[i].point(lowerEdge))) / double(boards.size());
        const Eigen::Vector3d turned = Eigen::AngleAxisd(angles[i] - angles[0], axis) *
                                           (toEigen(boards[0].translation) - origin) +
                                       origin;
        off += (turned - toEigen(boards[i].translation)).squaredNorm() / double(boards.size());
    }
    origin += (height - axis.dot(origin)) * axis;
    if (!(std::sqrt(off) < kMillimetresOff))
        throw CalibrationError("The board did not turn as the table does");
    return {fromEigen(origin), fromEigen(axis)};
}

} // namespace trovek::service
