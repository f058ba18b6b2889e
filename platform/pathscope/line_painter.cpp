#include "pathscope/line_painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace pathscope {

namespace {

constexpr float kNothing = -std::numeric_limits<float>::infinity();

/** The top is lit best, then the front, then the right side. */
constexpr float kLampX = 0.12F;
constexpr float kLampY = -0.5F;
constexpr float kLampZ = 0.86F;
constexpr float kAmbient = 0.38F;
constexpr float kLamp = 0.72F;

/** A layer reaches into the one below, or rounding would leave pinholes between them. */
constexpr float kOverlap = 1.05F;

/** Inline, unlike Qt's: a picture takes millions of them. */
float product(const QVector3D& a, const QVector3D& b)
{
    return a.x() * b.x() + a.y() * b.y() + a.z() * b.z();
}

float lightOn(const QVector3D& normal)
{
    // Light that wraps around keeps faces turned away from the lamp from all being the same.
    const float facing = 0.5F + 0.5F * product(normal, QVector3D(kLampX, kLampY, kLampZ));
    return kAmbient + kLamp * facing * std::sqrt(std::max(facing, 0.0F));
}

QRgb lit(const QColor& colour, float light)
{
    const auto channel = [light](int value) {
        return static_cast<int>(std::clamp(static_cast<float>(value) * light, 0.0F, 255.0F));
    };
    return qRgb(channel(colour.red()), channel(colour.green()), channel(colour.blue()));
}

/** A number that grows by as much with every pixel of a row and with every row. */
struct Plane
{
    Plane(float origin, float x, float y)
        : atOrigin(origin)
        , perX(x)
        , perY(y)
        , span(std::abs(x) < 1e-6F ? 0 : 1 / x)
    {}

    float at(float x, float y) const { return atOrigin + perX * x + perY * y; }

    /** Narrows a row's pixels to those whose number lies in [0, 1). */
    void narrow(float y, float& from, float& to) const
    {
        const float start = at(0, y);
        if (span == 0) {
            if (start < 0 || start >= 1)
                to = from - 1;
            return;
        }
        const float zero = -start * span;
        const float one = zero + span;
        from = std::max(from, std::min(zero, one));
        to = std::min(to, std::max(zero, one));
    }

    float atOrigin;
    float perX;
    float perY;
    /** Pixels from 0 to 1; 0 for a number that is the same in all of a row. */
    float span;
};

} // namespace

LinePainter::LinePainter(QSize size, const View& view)
    : m_size(size)
    , m_width(size.width() * kOversampling)
    , m_height(size.height() * kOversampling)
    , m_view(view)
    , m_depth(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), kNothing)
    , m_colour(m_depth.size(), 0)
{}

void LinePainter::drawBead(QVector3D from, QVector3D to, const Bead& bead)
{
    const float width = bead.width;
    QVector3D along = to - from;
    const float length = std::sqrt(along.x() * along.x() + along.y() * along.y());
    if (!(length > 1e-5F))
        return;
    // By half a width at both ends, so that the outer side of a corner is closed.
    const QVector3D ends = along * (width / 2 / length);
    from -= ends;
    along += ends * 2;

    QVector3D sideways(along.y(), -along.x(), 0);
    sideways /= length + width;
    if (product(sideways, m_view.back) < 0)
        sideways = -sideways;
    const QVector3D down(0, 0, -bead.height * kOverlap);
    const QVector3D edge = from + sideways * (width / 2);

    // A bead is round once it is large enough to see; below that, its rounds would only flicker.
    const float roundness = std::clamp((width * m_view.scale - 3) / 6, 0.0F, 1.0F);
    fill(
        {projected(edge), projectedDirection(along), projectedDirection(sideways * -bead.topWidth)},
        bead.colour, lightOn({0, 0, 1}), roundness);
    fill({projected(edge), projectedDirection(along), projectedDirection(down)}, bead.colour,
         lightOn(sideways), roundness);
}

QVector3D LinePainter::projected(QVector3D point) const
{
    const QVector3D direction = projectedDirection(point);
    return {m_view.originX + direction.x(), m_view.originY + direction.y(), direction.z()};
}

QVector3D LinePainter::projectedDirection(QVector3D direction) const
{
    return {product(direction, m_view.right) * m_view.scale,
            -product(direction, m_view.up) * m_view.scale,
            product(direction, m_view.back) * m_view.scale};
}

void LinePainter::fill(const Face& face, const QColor& colour, float light, float roundness)
{
    const QVector3D& a = face.along;
    const QVector3D& b = face.across;
    const float area = a.x() * b.y() - a.y() * b.x();
    if (!(std::abs(area) > 1e-6F))
        return;

    const float low = face.corner.y() + std::min({0.0F, a.y(), b.y(), a.y() + b.y()});
    const float high = face.corner.y() + std::max({0.0F, a.y(), b.y(), a.y() + b.y()});
    if (!(high > 0 && low < static_cast<float>(m_height)))
        return;
    const int top = std::max(0, static_cast<int>(std::ceil(low - 0.5F)));
    const int bottom = std::min(m_height, static_cast<int>(std::ceil(high - 0.5F)));

    // How far along and across the face a pixel's middle lies, 0 to 1.
    const float x0 = 0.5F - face.corner.x();
    const float y0 = 0.5F - face.corner.y();
    const Plane alongPlane((x0 * b.y() - y0 * b.x()) / area, b.y() / area, -b.x() / area);
    const Plane acrossPlane((y0 * a.x() - x0 * a.y()) / area, -a.y() / area, a.x() / area);

    const QRgb flat = lit(colour, light);
    for (int y = top; y < bottom; ++y) {
        const auto row = static_cast<float>(y);
        float from = 0;
        auto to = static_cast<float>(m_width);
        alongPlane.narrow(row, from, to);
        acrossPlane.narrow(row, from, to);
        if (from >= to)
            continue;
        const int first = static_cast<int>(std::ceil(from));
        const int end = std::min(m_width, static_cast<int>(std::ceil(to)));
        const std::size_t line = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
        for (int x = first; x < end; ++x) {
            const auto column = static_cast<float>(x);
            const float across = acrossPlane.at(column, row);
            const float depth =
                face.corner.z() + alongPlane.at(column, row) * a.z() + across * b.z();
            const std::size_t place = line + static_cast<std::size_t>(x);
            if (depth <= m_depth[place])
                continue;
            m_depth[place] = depth;
            const float off = 2 * across - 1;
            m_colour[place] =
                roundness > 0 ? lit(colour, light * (1 - 0.22F * roundness * off * off)) : flat;
        }
    }
}

float LinePainter::hollownessAt(int x, int y) const
{
    struct Ring
    {
        int radius;
        float weight;
    };
    constexpr std::array<Ring, 3> rings = {{{1, 0.3F}, {4, 0.35F}, {11, 0.35F}}};
    constexpr std::array<std::array<int, 2>, 8> directions = {
        {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}}};

    const auto at = [this](int column, int row) {
        return m_depth[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                       static_cast<std::size_t>(column)];
    };
    const float here = at(x, y);
    float hollow = 0;
    for (const Ring& ring : rings) {
        // A plane seen at a slant is no hollow: what rises on one side falls on the other.
        for (std::size_t i = 0; i < directions.size(); i += 2) {
            float rise = 0;
            for (std::size_t side = i; side < i + 2; ++side) {
                const int column = x + directions[side][0] * ring.radius;
                const int row = y + directions[side][1] * ring.radius;
                const bool isInside = column >= 0 && row >= 0 && column < m_width && row < m_height;
                const float there = isInside ? at(column, row) : kNothing;
                const float reach = static_cast<float>(ring.radius) * 3;
                rise += std::clamp(there - here, -reach, reach) / reach;
            }
            hollow += std::max(0.0F, rise) * ring.weight / 4;
        }
    }
    return std::min(hollow, 1.0F);
}

void LinePainter::darkenHollows()
{
    constexpr float darkest = 0.55F;
    std::size_t place = 0;
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x, ++place) {
            if (m_depth[place] == kNothing)
                continue;
            m_colour[place] = lit(QColor(m_colour[place]), 1 - darkest * hollownessAt(x, y));
        }
    }
}

QImage LinePainter::finished()
{
    darkenHollows();
    QImage picture(m_size, QImage::Format_ARGB32_Premultiplied);
    constexpr int pixels = kOversampling * kOversampling;
    for (int y = 0; y < m_size.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < m_size.width(); ++x) {
            int red = 0;
            int green = 0;
            int blue = 0;
            int alpha = 0;
            for (int i = 0; i < pixels; ++i) {
                const int column = x * kOversampling + i % kOversampling;
                const int row = y * kOversampling + i / kOversampling;
                const QRgb colour =
                    m_colour[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                             static_cast<std::size_t>(column)];
                red += qRed(colour);
                green += qGreen(colour);
                blue += qBlue(colour);
                alpha += qAlpha(colour);
            }
            line[x] = qRgba(red / pixels, green / pixels, blue / pixels, alpha / pixels);
        }
    }
    return picture;
}

} // namespace pathscope
