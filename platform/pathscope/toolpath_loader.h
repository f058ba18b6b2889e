#pragma once

#include "pathscope/export.h"
#include "pathscope/toolpaths.h"

#include <QObject>
#include <QString>

#include <memory>

namespace pathscope {

/**
 * Reads a sliced file in a thread of its own and hands out its toolpaths in pieces.
 *
 * All signals come from the event loop of the loader's thread. Destroying the loader or starting
 * the next file cancels; nothing of a canceled file is delivered any more.
 */
class PATHSCOPE_EXPORT ToolpathLoader : public QObject
{
    Q_OBJECT

public:
    explicit ToolpathLoader(QObject* parent = nullptr);
    ~ToolpathLoader() override;

    bool isLoading() const;
    QString file() const;

public slots:
    void load(const QString& file);
    /** Ends without finished() or failed(). */
    void cancel();

signals:
    void progressChanged(double fraction);
    /** The file's beginning; for a small file none comes before finished(). */
    void pieceReady(std::shared_ptr<const pathscope::Toolpaths> toolpaths);
    void finished(std::shared_ptr<const pathscope::Toolpaths> toolpaths);
    /** @param reason for the user, translated */
    void failed(const QString& reason);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace pathscope

Q_DECLARE_METATYPE(std::shared_ptr<const pathscope::Toolpaths>)
