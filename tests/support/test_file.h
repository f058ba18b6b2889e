#pragma once

#include <QFile>
#include <QTest>

namespace trovek {

/** What is in a file; words that no test expects when it cannot be read. */
inline QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

/** Fails the test when it cannot be written. */
inline void makeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

} // namespace trovek
