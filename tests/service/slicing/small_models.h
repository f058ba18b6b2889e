#pragma once

#include <QByteArray>

#include <array>
#include <vector>

/** From corner to corner, in millimetres. */
struct ModelBox
{
    std::array<double, 3> from;
    std::array<double, 3> to;
};

/** An ASCII STL of boxes. */
QByteArray stlOf(const std::vector<ModelBox>& boxes);

/** An AMF of one object with a part for each box; the parts name the extruders 1, 2 and so on. */
QByteArray amfOf(const std::vector<ModelBox>& boxes);
