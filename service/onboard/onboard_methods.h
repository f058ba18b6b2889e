#pragma once

#include <memory>

namespace trovek::service {

class MachineList;
class MethodTable;

/** What clients ask of onboard memories. */
class OnboardMethods
{
public:
    /** @param machines not owned; must outlive it */
    explicit OnboardMethods(MachineList& machines);
    /** Resets that are under way are given up, without an answer. */
    ~OnboardMethods();

    /** The table calls this object from now on. */
    void addTo(MethodTable& table);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
