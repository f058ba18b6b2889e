#include "trovek/machine_name.h"

#include <utility>

namespace trovek {

MachineName::MachineName(std::string name)
    : m_name(std::move(name))
{}

} // namespace trovek
