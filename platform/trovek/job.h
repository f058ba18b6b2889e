#pragma once

#include "trovek/export.h"
#include "trovek/machine_name.h"

#include <cstdint>
#include <string>

namespace trovek {

/** How a job ended. */
enum JobConclusion : int {
    JobEnded = 0,
    JobFailed = 1,
    JobCanceled = 2,
    JobNotConcluded = 3,
};

/** What the service says of one job at one moment. */
class TROVEK_EXPORT Job
{
public:
    using ID = std::int32_t;
    /** Marks that there is no job. */
    static const ID kInvalidID;

    struct Data
    {
        ID id = 0;
        /** What a user calls it: for a print the file's base name. */
        std::string name;
        /** The service's method that made it, for example "print_to_file". */
        std::string kind;
        MachineName machine;
        JobConclusion conclusion = JobNotConcluded;
        int progress = 0;
        std::string stage;
        /** Why it failed, for a user; empty otherwise. */
        std::string failure;
        /** Negative when the service does not know. */
        int secondsLeft = -1;
    };

    explicit Job(Data data);

    ID id() const { return m_data.id; }
    const std::string& name() const { return m_data.name; }
    const std::string& kind() const { return m_data.kind; }
    const MachineName& machine() const { return m_data.machine; }
    JobConclusion conclusion() const { return m_data.conclusion; }
    /** 0 to 100. */
    int progress() const { return m_data.progress; }
    /** What it does now, for example "Heating". */
    const std::string& stage() const { return m_data.stage; }
    const std::string& failure() const { return m_data.failure; }
    int secondsLeft() const { return m_data.secondsLeft; }

private:
    Data m_data;
};

} // namespace trovek
