#pragma once

#include "service/service_world.h"
#include "support/test_log.h"

#include <QString>
#include <QStringList>

#include <string>

namespace trovek {

/** A service that slices, and a client of it. */
class SliceWorld
{
public:
    /** Slices take their time on a machine with much to do. */
    static constexpr int kSliceMs = 60000;

    /**
     * @param slicer empty for the installed one
     * @param atOnce slices; 0 for one a processor
     */
    explicit SliceWorld(const QString& slicer = QString(), int atOnce = 0);

    /** Without start and end code, as for a preview. */
    int preview(const std::string& model, const std::string& out);
    int exportTo(const std::string& model, const std::string& out, const char* format,
                 bool skipStartEnd = false);
    int print(const std::string& model, bool skipStartEnd = false);

    Job job(int id) { return client.jobFromID(id); }
    /** Waits for the conclusion. */
    Job conclude(int id);
    bool waitForStage(int id, const std::string& beginning);

    /** What lies where slices are made. */
    QStringList leftovers() const;

    TestLog log;
    ServiceWorld world;
    RecordingTrovek client;
    SlicerConfiguration configuration;
    std::vector<std::string> materials{"pla"};
    MachineName archetype{ServiceWorld::kArchetype};
    MachineName machine{ServiceWorld::kMachine};
};

} // namespace trovek
