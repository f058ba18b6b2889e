#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace trovek {

/** A site on this machine, in a thread of its own: a test's thread may wait for it. */
class HttpSite
{
public:
    /** It answers 404 for everything. */
    HttpSite();
    ~HttpSite();

    /** Of its folder "firmware", without a slash at the end. */
    QString address() const;

    /** @param path from the root, with a slash in front */
    void serve(const QByteArray& path, const QByteArray& body);
    /** Status line, header lines and body as they are; then the connection ends. */
    void serveRaw(const QByteArray& path, const QByteArray& response);
    /** It takes requests of this path and never answers. */
    void hang(const QByteArray& path);

    /** Requests so far. */
    int requests() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
