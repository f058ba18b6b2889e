#include "make_dialog/length_validator.h"

#include "trovek-ui/messages.h"

#include <QDir>
#include <QFileInfo>

namespace trovek {

namespace {

constexpr int kMaxLength = 30;

QString shortened(const QString& fileName)
{
    const QString ending = QLatin1Char('.') + fileName.right(3);
    QString base = QFileInfo(fileName).completeBaseName().left(kMaxLength - ending.size());
    // Half of a pair is no character, and not every file system takes it.
    if (!base.isEmpty() && base.at(base.size() - 1).isHighSurrogate())
        base.chop(1);
    return base + ending;
}

} // namespace

FileChooserValidator::Result LengthValidator::validate(const QString& path, QWidget* parent)
{
    const QFileInfo file(path);
    const QString name = file.fileName();
    const bool isMachineFile = name.endsWith(QLatin1String("s3g"), Qt::CaseInsensitive) ||
                               name.endsWith(QLatin1String("x3g"), Qt::CaseInsensitive);
    if (!isMachineFile || name.size() <= kMaxLength)
        return {Accept, path};

    const QString shortName = shortened(name);
    using Message = message::FilenameTooLongForPrinter;
    if (Message(shortName, parent).exec() != Message::Save)
        return {Reject, path};
    return {Replace, file.absoluteDir().filePath(shortName)};
}

} // namespace trovek
