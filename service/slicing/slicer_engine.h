#pragma once

#include <QString>

#include <string>

namespace trovek::service {

struct MachineDefinition;
struct SliceSettings;

/** One model to slice. Paths are absolute. */
struct SliceJob
{
    const MachineDefinition* machine = nullptr;
    const SliceSettings* settings = nullptr;
    /** The service's own copy of the model, with its suffix. */
    QString modelPath;
    /** Where the G-code goes, without start and end code; does not exist before. */
    QString outputPath;
    /** A folder for the engine's own files. */
    QString workFolder;
    /** Gives way to everything else on the machine, for previews. */
    bool lowPriority = false;
};

/** What slices models. Another slicer is one more class. */
class SlicerEngine
{
public:
    /** Used from the thread that slices. */
    class Control
    {
    public:
        virtual ~Control() = default;
        /** The engine looks at least every tenth of a second. */
        virtual bool isCanceled() const = 0;
        /**
         * @param percent 0 to 99, never less than before
         * @param stage   for a user
         */
        virtual void setProgress(int percent, const QString& stage) = 0;
    };

    virtual ~SlicerEngine() = default;
    /** For a log. */
    virtual std::string name() const = 0;
    /**
     * Returns when the whole result stands in the output; blocks its thread. After an error or a
     * cancel nothing runs any more, and there is no output.
     * @throws std::runtime_error with a text for a user
     * @throws GCodeCanceled when it was canceled
     */
    virtual void slice(const SliceJob& job, Control& control) const = 0;
};

} // namespace trovek::service
