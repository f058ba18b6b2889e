#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <string>

namespace trovek {

/**
 * A shell script that is called as prusa-slicer is.
 *
 * Its body finds the paths in $out, $options, $folder and $model, and the folder of the test's own
 * in $test. `finish` writes a whole result.
 */
class FakeSlicer
{
public:
    explicit FakeSlicer(const QByteArray& body);

    QString program() const { return m_dir.filePath(QStringLiteral("slicer")); }
    /** In the test's own folder. */
    QString path(const char* name) const { return m_dir.filePath(QString::fromLatin1(name)); }
    /** Empty while there is no such file. */
    QByteArray read(const char* name) const;
    void write(const char* name) const;
    /** The number in a file; waits for it. */
    qint64 processId(const char* name) const;

private:
    QTemporaryDir m_dir;
};

/** What a result has to end with to count as whole. */
extern const char kEndOfResult[];

bool isAlive(qint64 processId);

} // namespace trovek
