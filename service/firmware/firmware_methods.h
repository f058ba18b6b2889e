#pragma once

#include <QString>

#include <memory>

namespace trovek::service {

class MachineList;
class MethodTable;

/** What clients ask about firmware: what there is, a copy of it, and writing it to a machine. */
class FirmwareMethods
{
public:
    /**
     * @param machines  not owned; must outlive it
     * @param catalogue see FirmwareSource
     * @param cache     the folder of downloaded images
     * @throws std::runtime_error for an address of a catalogue that is none
     */
    FirmwareMethods(MachineList& machines, const QString& catalogue, const QString& cache);
    /** What is under way is given up, without an answer. */
    ~FirmwareMethods();

    /** The table calls this object from now on. */
    void addTo(MethodTable& table);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
