#pragma once

#include <QWidget>

#include <memory>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/** One page with each of the library's small widgets, usable and disabled. */
std::unique_ptr<QWidget> makeWidgetsPage(trovek::TrovekQt& facade);

} // namespace ostrand
