#pragma once

namespace trovek::geometry {
struct Mesh;
}

namespace trovek::service {

/**
 * What the virtual scanner sees when nothing else was put on its table: the head of a bear, closed,
 * standing on z = 0, about 50 mm high, and the same from no two sides.
 */
geometry::Mesh defaultModel();

} // namespace trovek::service
