#include "firmware/firmware_source.h"

#include <trovek/text.h>

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <memory>

static void initializeFirmwareResource()
{
    // A static library's resources are dropped by the linker when nobody asks for them.
    Q_INIT_RESOURCE(firmware);
}

namespace trovek::service {

namespace {

constexpr char kCompiledIn[] = "qrc:/trovek/firmware/";
constexpr int kLookMs = 50;

FirmwareSourceError failure(const QString& text)
{
    return FirmwareSourceError(toStdString(text));
}

FirmwareSourceError tooLarge(const QString& name)
{
    return failure(QStringLiteral("%1 is larger than it should be").arg(name));
}

QByteArray readFile(const QString& path, int bytesAtMost)
{
    // A pipe or a device would block for ever.
    if (!QFileInfo(path).isFile())
        throw failure(QStringLiteral("There is no file %1").arg(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw failure(QStringLiteral("Cannot read %1: %2").arg(path, file.errorString()));
    // One byte more than there should be tells a file that is too large.
    const QByteArray bytes = file.read(bytesAtMost + 1LL);
    if (bytes.size() > bytesAtMost)
        throw tooLarge(path);
    return bytes;
}

/** One request of a file, with an event loop of its own for this thread. */
class Fetch
{
public:
    Fetch(const QUrl& url, int bytesAtMost)
        : m_url(url)
        , m_bytesAtMost(bytesAtMost)
    {
        QNetworkRequest request(url);
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                             QNetworkRequest::NoLessSafeRedirectPolicy);
        m_reply.reset(m_network.get(request));
    }

    void run(int timeoutMs, const std::function<bool()>& isCanceled)
    {
        QEventLoop loop;
        QTimer deadline;
        deadline.setSingleShot(true);
        QObject::connect(&deadline, &QTimer::timeout, m_reply.get(), [this] {
            m_late = true;
            m_reply->abort();
        });
        deadline.start(timeoutMs);
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, m_reply.get(), [this, &isCanceled] {
            if (isCanceled())
                m_reply->abort();
        });
        look.start(kLookMs);
        QObject::connect(m_reply.get(), &QNetworkReply::readyRead, m_reply.get(), [this] {
            m_bytes += m_reply->readAll();
            if (m_bytes.size() > m_bytesAtMost)
                m_reply->abort();
        });
        QObject::connect(m_reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        if (!m_reply->isFinished())
            loop.exec();
    }

    QByteArray bytes() const
    {
        const QString url = m_url.toDisplayString();
        if (m_bytes.size() > m_bytesAtMost)
            throw tooLarge(url);
        if (m_reply->error() == QNetworkReply::NoError)
            return m_bytes;
        const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (status.isValid() && status.toInt() >= 400)
            throw failure(
                QStringLiteral("The site answers %1 for %2").arg(status.toInt()).arg(url));
        const QString reason =
            m_late ? QStringLiteral("No answer in time") : m_reply->errorString();
        throw failure(QStringLiteral("Cannot reach %1: urlopen error: %2").arg(url, reason));
    }

private:
    const QUrl m_url;
    const int m_bytesAtMost;
    QNetworkAccessManager m_network;
    std::unique_ptr<QNetworkReply> m_reply;
    QByteArray m_bytes;
    bool m_late = false;
};

} // namespace

FirmwareSource::FirmwareSource(const QString& address)
    : m_folder(QLatin1String(kCompiledIn))
{
    initializeFirmwareResource();
    if (address.isEmpty())
        return;
    m_folder = QDir::isAbsolutePath(address) ? QUrl::fromLocalFile(address) : QUrl(address);
    const bool isSite = (m_folder.scheme() == QLatin1String("http") ||
                         m_folder.scheme() == QLatin1String("https")) &&
                        !m_folder.host().isEmpty();
    const bool isFolder = m_folder.isLocalFile() && !address.startsWith(QLatin1Char(':')) &&
                          QDir::isAbsolutePath(m_folder.toLocalFile());
    if (!m_folder.isValid() || (!isSite && !isFolder)) {
        throw std::runtime_error(toStdString(
            QStringLiteral("Neither a folder nor an address of firmware: \"%1\"").arg(address)));
    }
    if (!m_folder.path().endsWith(QLatin1Char('/')))
        m_folder.setPath(m_folder.path() + QLatin1Char('/'));
}

QByteArray FirmwareSource::read(const QString& name, int bytesAtMost, int timeoutMs,
                                const std::function<bool()>& isCanceled) const
{
    QUrl url = m_folder;
    url.setPath(m_folder.path() + name);
    if (url.scheme() == QLatin1String("qrc"))
        return readFile(QLatin1Char(':') + url.path(), bytesAtMost);
    if (url.isLocalFile())
        return readFile(url.toLocalFile(), bytesAtMost);
    Fetch fetch(url, bytesAtMost);
    fetch.run(timeoutMs, isCanceled);
    return fetch.bytes();
}

} // namespace trovek::service
