#include "trovek/printer.h"

#include <utility>

namespace trovek {

Printer::Printer(Data data)
    : m_data(std::move(data))
{}

} // namespace trovek
