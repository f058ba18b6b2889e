#include "service/slicing/small_models.h"

namespace {

using Point = std::array<double, 3>;

Point corner(const ModelBox& box, int index)
{
    Point point{};
    for (std::size_t axis = 0; axis < 3; ++axis)
        point[axis] = (index >> axis) % 2 == 0 ? box.from[axis] : box.to[axis];
    return point;
}

/** Of a box's corners, counter-clockwise from outside. */
constexpr int kTriangles[12][3] = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6},
                                   {0, 1, 5}, {0, 5, 4}, {2, 6, 7}, {2, 7, 3},
                                   {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};

QByteArray number(double value)
{
    return QByteArray::number(value, 'f', 4);
}

} // namespace

QByteArray stlOf(const std::vector<ModelBox>& boxes)
{
    QByteArray text = "solid model\n";
    for (const ModelBox& box : boxes) {
        for (const auto& triangle : kTriangles) {
            text += "facet normal 0 0 0\nouter loop\n";
            for (const int index : triangle) {
                const Point point = corner(box, index);
                text += "vertex " + number(point[0]) + ' ' + number(point[1]) + ' ' +
                        number(point[2]) + '\n';
            }
            text += "endloop\nendfacet\n";
        }
    }
    return text + "endsolid model\n";
}

QByteArray amfOf(const std::vector<ModelBox>& boxes)
{
    QByteArray vertices;
    QByteArray volumes;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        for (int index = 0; index < 8; ++index) {
            const Point point = corner(boxes[i], index);
            vertices += "<vertex><coordinates><x>" + number(point[0]) + "</x><y>" +
                        number(point[1]) + "</y><z>" + number(point[2]) +
                        "</z></coordinates></vertex>\n";
        }
        volumes += "<volume><metadata type=\"slic3r.extruder\">" +
                   QByteArray::number(static_cast<int>(i) + 1) + "</metadata>\n";
        for (const auto& triangle : kTriangles) {
            volumes += "<triangle>";
            for (int v = 0; v < 3; ++v) {
                const QByteArray name = "v" + QByteArray::number(v + 1);
                const int index = triangle[v] + 8 * static_cast<int>(i);
                volumes += '<' + name + '>' + QByteArray::number(index) + "</" + name + '>';
            }
            volumes += "</triangle>\n";
        }
        volumes += "</volume>\n";
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<amf unit=\"millimeter\">\n"
           "<object id=\"0\"><mesh><vertices>\n" +
           vertices + "</vertices>\n" + volumes + "</mesh></object>\n</amf>\n";
}
