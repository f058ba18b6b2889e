#pragma once

class QFormLayout;
class QWidget;

namespace trovek {

/**
 * Lets Tab go through a form from top to bottom, starting after `first`, whatever the order in
 * which its rows were added. Within one widget of a row the order stays as it is.
 */
void orderTabStops(const QFormLayout& form, QWidget* first);

} // namespace trovek
