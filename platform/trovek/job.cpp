#include "trovek/job.h"

#include <utility>

namespace trovek {

const Job::ID Job::kInvalidID = -1;

Job::Job(Data data)
    : m_data(std::move(data))
{}

} // namespace trovek
