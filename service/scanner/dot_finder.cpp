#include "scanner/dot_finder.h"

#include "scanner/picture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace trovek::service {

namespace {

constexpr double kPi = 3.14159265358979323846;

double operator*(const PixelPoint& a, const PixelPoint& b)
{
    return a.x * b.y - a.y * b.x;
}
PixelPoint operator+(const PixelPoint& a, const PixelPoint& b)
{
    return {a.x + b.x, a.y + b.y};
}
PixelPoint operator-(const PixelPoint& a, const PixelPoint& b)
{
    return {a.x - b.x, a.y - b.y};
}
double length(const PixelPoint& a)
{
    return std::hypot(a.x, a.y);
}

struct Spot
{
    PixelPoint middle;
    double area = 0;
};

class GreyPicture
{
public:
    explicit GreyPicture(const Picture& picture)
        : width(picture.width)
        , height(picture.height)
    {
        levels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const std::uint8_t* const pixel = picture.pixel(x, y);
                levels.push_back((pixel[0] + pixel[1] + pixel[2]) / 3);
            }
        }
    }

    int at(int x, int y) const
    {
        return levels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }

    int width;
    int height;
    std::vector<int> levels;
};

/** The level that parts dark and light best: with the largest variance between the two. */
int threshold(const GreyPicture& picture)
{
    std::array<double, 256> counts{};
    for (const int level : picture.levels)
        ++counts[static_cast<std::size_t>(level)];
    double all = 0;
    for (std::size_t level = 0; level < counts.size(); ++level)
        all += double(level) * counts[level];
    double below = 0;
    double sumBelow = 0;
    double best = -1;
    int found = 0;
    const auto total = double(picture.levels.size());
    for (std::size_t level = 0; level < counts.size(); ++level) {
        below += counts[level];
        sumBelow += double(level) * counts[level];
        if (below == 0 || below == total)
            continue;
        const double difference = sumBelow / below - (all - sumBelow) / (total - below);
        const double variance = below * (total - below) * difference * difference;
        if (variance > best) {
            best = variance;
            found = static_cast<int>(level);
        }
    }
    return found;
}

/** Dark places with light all around them, as round as a dot can look. */
class SpotFinder
{
public:
    explicit SpotFinder(const Picture& picture)
        : m_grey(picture)
        , m_threshold(threshold(m_grey))
        , m_seen(m_grey.levels.size(), false)
    {}

    std::vector<Spot> find()
    {
        std::vector<Spot> spots;
        for (int y = 0; y < m_grey.height; ++y) {
            for (int x = 0; x < m_grey.width; ++x) {
                if (!take(x, y))
                    continue;
                if (const auto spot = measure(x, y))
                    spots.push_back(*spot);
            }
        }
        return spots;
    }

private:
    bool take(int x, int y)
    {
        const std::size_t index =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(m_grey.width) +
            static_cast<std::size_t>(x);
        if (m_seen[index] || m_grey.at(x, y) > m_threshold)
            return false;
        m_seen[index] = true;
        return true;
    }

    /** Everything dark that hangs together with a pixel that was taken. */
    std::optional<Spot> measure(int fromX, int fromY)
    {
        constexpr std::size_t kPixelsAtLeast = 12;
        const std::size_t pixelsAtMost = m_grey.levels.size() / 100;
        std::vector<std::pair<int, int>> pixels = {{fromX, fromY}};
        bool touchesEdge = false;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const auto [x, y] = pixels[i];
            if (x == 0 || y == 0 || x == m_grey.width - 1 || y == m_grey.height - 1) {
                touchesEdge = true;
            }
            for (const auto& [nextX, nextY] : {std::pair(x - 1, y), std::pair(x + 1, y),
                                               std::pair(x, y - 1), std::pair(x, y + 1)}) {
                if (nextX >= 0 && nextY >= 0 && nextX < m_grey.width && nextY < m_grey.height &&
                    take(nextX, nextY))
                    pixels.emplace_back(nextX, nextY);
            }
        }
        if (touchesEdge || pixels.size() < kPixelsAtLeast || pixels.size() > pixelsAtMost)
            return std::nullopt;
        if (!isEllipse(pixels))
            return std::nullopt;
        return middleOf(pixels);
    }

    static bool isEllipse(const std::vector<std::pair<int, int>>& pixels)
    {
        const auto count = double(pixels.size());
        double sumX = 0;
        double sumY = 0;
        for (const auto& [x, y] : pixels) {
            sumX += x;
            sumY += y;
        }
        // Each pixel is a square, which has a spread of its own.
        double spreadX = count / 12;
        double spreadY = count / 12;
        double both = 0;
        for (const auto& [x, y] : pixels) {
            spreadX += (x - sumX / count) * (x - sumX / count);
            spreadY += (y - sumY / count) * (y - sumY / count);
            both += (x - sumX / count) * (y - sumY / count);
        }
        const double determinant = (spreadX * spreadY - both * both) / (count * count);
        const double area = 4 * kPi * std::sqrt(std::max(0.0, determinant));
        return area > 0 && std::abs(count / area - 1) < 0.15;
    }

    /** The middle of the darkness, with the grey pixels of the rim for what they are. */
    Spot middleOf(const std::vector<std::pair<int, int>>& pixels) const
    {
        int left = m_grey.width;
        int right = 0;
        int top = m_grey.height;
        int bottom = 0;
        for (const auto& [x, y] : pixels) {
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
        constexpr int kRim = 2;
        left = std::max(0, left - kRim);
        top = std::max(0, top - kRim);
        right = std::min(m_grey.width - 1, right + kRim);
        bottom = std::min(m_grey.height - 1, bottom + kRim);
        // What is white here: the level most of the rim has.
        std::vector<int> rim;
        for (int x = left; x <= right; ++x) {
            rim.push_back(m_grey.at(x, top));
            rim.push_back(m_grey.at(x, bottom));
        }
        std::nth_element(rim.begin(), rim.begin() + std::ptrdiff_t(rim.size() / 2), rim.end());
        const int white = rim[rim.size() / 2];
        Spot spot;
        double sumX = 0;
        double sumY = 0;
        for (int y = top; y <= bottom; ++y) {
            for (int x = left; x <= right; ++x) {
                // The noise of white pixels would draw the middle to that of the rectangle.
                const int darkness = white - m_grey.at(x, y);
                if (darkness < (white - m_threshold) / 4)
                    continue;
                spot.area += darkness;
                sumX += darkness * (x + 0.5);
                sumY += darkness * (y + 0.5);
            }
        }
        spot.middle = {sumX / spot.area, sumY / spot.area};
        spot.area = double(pixels.size());
        return spot;
    }

    GreyPicture m_grey;
    int m_threshold;
    std::vector<bool> m_seen;
};

/** The three large dots: the corner, the one to its right, the one above. */
std::optional<std::array<PixelPoint, 3>> largeDots(std::vector<Spot> spots)
{
    if (spots.size() < 3)
        return std::nullopt;
    std::partial_sort(spots.begin(), spots.begin() + 3, spots.end(),
                      [](const Spot& a, const Spot& b) { return a.area > b.area; });
    std::array<PixelPoint, 3> dots = {spots[0].middle, spots[1].middle, spots[2].middle};
    // The two that are close together are the short arm of the L.
    std::size_t far = 0;
    double nearest = length(dots[1] - dots[2]);
    for (std::size_t i = 1; i < 3; ++i) {
        const double distance = length(dots[(i + 1) % 3] - dots[(i + 2) % 3]);
        if (distance < nearest) {
            nearest = distance;
            far = i;
        }
    }
    PixelPoint corner = dots[(far + 1) % 3];
    PixelPoint above = dots[(far + 2) % 3];
    // Pictures have y pointing down, and the board is seen from its front.
    if ((dots[far] - corner) * (above - corner) > 0)
        std::swap(corner, above);
    return std::array<PixelPoint, 3>{corner, dots[far], above};
}

} // namespace

std::optional<BoardDots> findDots(const Picture& picture)
{
    const std::vector<Spot> spots = SpotFinder(picture).find();
    const auto large = largeDots(spots);
    if (!large)
        return std::nullopt;
    const auto& [corner, right, above] = *large;

    // From the corner on, each dot tells where those beside it should be.
    struct Known
    {
        PixelPoint place;
        PixelPoint toRight;
        PixelPoint up;
    };
    using Position = std::pair<int, int>;
    std::map<Position, Known> known;
    std::vector<Position> open;
    const PixelPoint along = right - corner;
    known[{board::kCorner.column, board::kCorner.row}] = {
        corner, {along.x / 3, along.y / 3}, above - corner};
    open.emplace_back(board::kCorner.column, board::kCorner.row);
    while (!open.empty()) {
        const Position from = open.back();
        const Known here = known.at(from);
        open.pop_back();
        const std::pair<Position, PixelPoint> steps[] = {
            {{1, 0}, here.toRight},
            {{-1, 0}, PixelPoint{} - here.toRight},
            {{0, 1}, here.up},
            {{0, -1}, PixelPoint{} - here.up},
        };
        for (const auto& [step, move] : steps) {
            const Position to(from.first + step.first, from.second + step.second);
            if (to.first < 0 || to.second < 0 || to.first >= board::kColumns ||
                to.second >= board::kRows || known.count(to) > 0)
                continue;
            const PixelPoint expected = here.place + move;
            const auto nearest = std::min_element(
                spots.begin(), spots.end(), [&expected](const Spot& a, const Spot& b) {
                    return length(a.middle - expected) < length(b.middle - expected);
                });
            if (length(nearest->middle - expected) > 0.35 * length(move))
                continue;
            Known there = here;
            there.place = nearest->middle;
            const PixelPoint moved = nearest->middle - here.place;
            if (step.first != 0)
                there.toRight = step.first > 0 ? moved : PixelPoint{} - moved;
            else
                there.up = step.second > 0 ? moved : PixelPoint{} - moved;
            known[to] = there;
            open.push_back(to);
        }
    }
    if (known.size() != std::size_t(board::kDots))
        return std::nullopt;
    BoardDots dots;
    for (const auto& [position, dot] : known)
        dots[dotIndex(position.first, position.second)] = dot.place;
    return dots;
}

std::vector<PixelPoint> findLaserLine(const Picture& with, const Picture& without)
{
    constexpr int kClear = 40;
    const int widest = std::max(6, with.width / 100);
    std::vector<PixelPoint> line;
    for (int y = 0; y < with.height; ++y) {
        const auto light = [&](int x) {
            return std::max(0, with.pixel(x, y)[0] - without.pixel(x, y)[0]);
        };
        int peak = 0;
        for (int x = 1; x < with.width; ++x)
            peak = light(x) > light(peak) ? x : peak;
        const int left = std::max(0, peak - widest);
        const int right = std::min(with.width - 1, peak + widest);
        // On the rim of a dot a part of the line is lost, and its middle lies elsewhere.
        int darkest = 255;
        for (int x = left; x <= right; ++x)
            darkest = std::min<int>(darkest, without.pixel(x, y)[0]);
        if (light(peak) < kClear || darkest < without.pixel(peak, y)[0] * 3 / 4)
            continue;
        double sum = 0;
        double sumX = 0;
        for (int x = left; x <= right; ++x) {
            // Noise far from the line would draw its middle there.
            if (light(x) < light(peak) / 4)
                continue;
            sum += light(x);
            sumX += light(x) * (x + 0.5);
        }
        line.push_back({sumX / sum, y + 0.5});
    }
    return line;
}

} // namespace trovek::service
