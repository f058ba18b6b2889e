#pragma once

#include "file_page.h"

#include <QDateTime>
#include <QPixmap>

class QFileInfo;
class QHBoxLayout;
class QImage;
class QVBoxLayout;

namespace ostrand {

/** A page with a bar, with the file and the button, above a large picture of the file. */
class PicturePage : public FilePage
{
    Q_OBJECT

public:
    /** Reads the file when it is another one, or has changed on the disk. */
    void showFile(const QString& path) override;

protected:
    explicit PicturePage(QWidget* parent);

    /** Reads the file, which may not exist, for its pictures; the earlier ones are dropped. */
    virtual void read(const QFileInfo& file) = 0;

    /** Puts one more fact into the bar. */
    void addFact(QLabel& label);
    /** Puts it in the place below the bar. */
    void setLargePicture(QWidget& widget);
    /** The picture of the file in the bar, in device pixels. */
    QSize smallPictureSize() const;
    void setSmallPicture(const QImage& image);
    /** Empty before the first file. */
    const QString& path() const { return m_path; }

private:
    QVBoxLayout* const m_column;
    QHBoxLayout* const m_facts;
    QString m_path;
    qint64 m_bytes = -1;
    QDateTime m_changed;
    /** Of the file as it was read last; null until it is drawn. */
    QPixmap m_small;
};

} // namespace ostrand
