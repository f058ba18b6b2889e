#pragma once

#include "pathscope/export.h"
#include "pathscope/toolpaths.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <string>

namespace pathscope {

struct ParseOptions;

/**
 * Reads a sliced file in a thread of its own and hands out its toolpaths in pieces.
 *
 * All signals come from the event loop of the loader's thread, never from within load(). Destroying
 * the loader or starting the next file cancels; nothing of a canceled file is delivered any more.
 * An event loop that is slower than the reading gets only the latest progress and piece.
 */
class PATHSCOPE_EXPORT ToolpathLoader : public QObject
{
    Q_OBJECT

public:
    /** As parseGCodeFile(); called in the loader's thread. */
    using Parse = std::function<std::shared_ptr<const Toolpaths>(const std::string& path,
                                                                 const ParseOptions& options)>;

    explicit ToolpathLoader(QObject* parent = nullptr);
    /** With another reader than the one for G-code. */
    explicit ToolpathLoader(Parse parse, QObject* parent = nullptr);
    ~ToolpathLoader() override;

    /** From load() until just before finished() or failed(). */
    bool isLoading() const;
    /** The last one that was asked for. */
    QString file() const;

public slots:
    void load(const QString& file);
    /** Ends without finished() or failed(). */
    void cancel();

signals:
    /** 0 to 1, rising; 1 comes just before finished(). */
    void progressChanged(double fraction);
    /** The file's beginning; for a small file none comes before finished(). */
    void pieceReady(std::shared_ptr<const pathscope::Toolpaths> toolpaths);
    void finished(std::shared_ptr<const pathscope::Toolpaths> toolpaths);
    /** @param reason for the user, translated */
    void failed(const QString& reason);

private:
    class PATHSCOPE_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace pathscope

Q_DECLARE_METATYPE(std::shared_ptr<const pathscope::Toolpaths>)
