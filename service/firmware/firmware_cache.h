#pragma once

#include <QByteArray>
#include <QString>

#include <mutex>
#include <string>

namespace trovek::service {

/**
 * The downloaded images, each a file of which the name tells what is in it.
 *
 * A file is there whole or not at all. Every thread may use it.
 */
class FirmwareCache
{
public:
    /** More are forgotten, the oldest first. */
    static constexpr int kKept = 20;

    /** @param folder absolute; made when the first image is kept */
    explicit FirmwareCache(QString folder);

    /**
     * Keeps an image of which everything was checked.
     * @return its path, UTF-8
     * @throws JsonRpcException FirmwareCacheError
     */
    std::string add(const QByteArray& image);

    /**
     * The image that add() keeps under this path, checked again.
     * @throws JsonRpcException FirmwareUnavailableError for any other path, FirmwareImageError when
     *         it has been changed since
     */
    QByteArray read(const std::string& path) const;

private:
    void forgetOldOnes(const QString& newest) const;

    const QString m_folder;
    std::mutex m_mutex;
};

} // namespace trovek::service
