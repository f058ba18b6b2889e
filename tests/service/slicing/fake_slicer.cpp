#include "fake_slicer.h"

#include <QFile>
#include <QTest>

#include <stdexcept>

namespace trovek {

const char kEndOfResult[] = "; prusaslicer_config = end\n";

FakeSlicer::FakeSlicer(const QByteArray& body)
{
    QFile file(program());
    const QByteArray script =
        "#!/bin/sh\n"
        "test='" +
        m_dir.path().toUtf8() +
        "'\n"
        "arguments=\"$*\"\n"
        "while [ $# -gt 1 ]; do\n"
        "    case $1 in\n"
        "        -o) out=$2; shift ;;\n"
        "        --load) options=$2; shift ;;\n"
        "        --datadir) folder=$2; shift ;;\n"
        "    esac\n"
        "    shift\n"
        "done\n"
        "model=$1\n"
        "finish() {\n"
        "    printf 'G1 X10 Y10 Z0.2 E1\\n; prusaslicer_config = end\\n' > \"$out\"\n"
        "}\n" +
        body + "\n";
    if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size())
        throw std::runtime_error("The test cannot write its slicer");
    file.close();
    file.setPermissions(file.permissions() | QFile::ExeOwner);
}

QByteArray FakeSlicer::read(const char* name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void FakeSlicer::write(const char* name) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("The test cannot write a file");
}

qint64 FakeSlicer::processId(const char* name) const
{
    if (!QTest::qWaitFor([&] { return read(name).endsWith('\n'); }, 10000))
        throw std::runtime_error("The slicer did not write its number");
    return read(name).trimmed().toLongLong();
}

bool isAlive(qint64 processId)
{
    // "12 (sh) Z 1 ...": what only waits to be buried is dead.
    QFile file(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray stat = file.readAll();
    return !stat.mid(stat.lastIndexOf(')')).startsWith(") Z");
}

} // namespace trovek
