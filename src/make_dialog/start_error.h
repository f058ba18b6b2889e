#pragma once

class QWidget;

namespace trovek {

/** Logs the exception that is being handled and shows what a user can know of it. */
void reportStartError(QWidget* parent);

} // namespace trovek
