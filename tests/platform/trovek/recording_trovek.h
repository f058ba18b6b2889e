#pragma once

#include <trovek/trovek.h>

#include <functional>
#include <string>
#include <vector>

namespace trovek {

/** A client that writes down its hooks, for example "printerAdded left". */
class RecordingTrovek : public Trovek
{
public:
    std::vector<std::string> events;
    /** Called inside every hook, after it was written down. */
    std::function<void(const std::string& event)> onEvent;

    /** All events so far, with ", " between. */
    std::string story() const
    {
        std::string text;
        for (const std::string& event : events)
            text += (text.empty() ? "" : ", ") + event;
        return text;
    }

protected:
    void emitPrinterAdded(Printer* printer) override { record("printerAdded " + nameOf(printer)); }
    void emitPrinterRemoved(Printer* printer) override
    {
        record("printerRemoved " + nameOf(printer));
    }
    void emitPrinterChanged(Printer* printer) override
    {
        record("printerChanged " + nameOf(printer));
    }
    void emitJobAdded(int id) override { record("jobAdded " + std::to_string(id)); }
    void emitJobConcluded(int id) override { record("jobConcluded " + std::to_string(id)); }
    void emitJobChanged(int id) override { record("jobChanged " + std::to_string(id)); }
    void emitPortAttached(const std::string& name) override { record("portAttached " + name); }
    void emitPortDetached(const std::string& name) override { record("portDetached " + name); }
    void emitCameraClosed(const std::string& path) override { record("cameraClosed " + path); }
    void emitDisconnected() override { record("disconnected"); }

private:
    static std::string nameOf(const Printer* printer) { return printer->key().name(); }

    void record(const std::string& event)
    {
        events.push_back(event);
        if (onEvent)
            onEvent(event);
    }
};

} // namespace trovek
