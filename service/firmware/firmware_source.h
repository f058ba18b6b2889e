#pragma once

#include <QByteArray>
#include <QUrl>

#include <functional>
#include <stdexcept>

namespace trovek::service {

/** A file of a catalogue that cannot be read; the text is for a user. */
class FirmwareSourceError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** Where a catalogue's files come from: the program itself, a folder, or a site on the network. */
class FirmwareSource
{
public:
    /**
     * @param address an absolute folder, a "file:", "http:" or "https:" address of one; the
     *                compiled-in catalogue when empty. Nothing is looked at yet.
     * @throws std::runtime_error for any other text
     */
    explicit FirmwareSource(const QString& address);

    /**
     * Reads a whole file; waits for it, so call it from a thread that may wait.
     * @param name        a plain file name
     * @param bytesAtMost what it may have
     * @param timeoutMs   of the network
     * @param isCanceled  asked now and then while it waits for the network; called from this thread
     * @throws FirmwareSourceError; a site that cannot be reached has "urlopen" in its text, where
     *         clients look for it
     */
    QByteArray read(const QString& name, int bytesAtMost, int timeoutMs,
                    const std::function<bool()>& isCanceled) const;

private:
    /** Ends with a slash. */
    QUrl m_folder;
};

} // namespace trovek::service
