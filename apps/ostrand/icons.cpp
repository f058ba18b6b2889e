#include "icons.h"

#include <QDir>
#include <QString>

// A static library's resources are there only when somebody asks for them by name.
static void initResources()
{
    Q_INIT_RESOURCE(ostrand);
}

namespace ostrand {

QIcon icon(const char* name)
{
    initResources();
    return QIcon(QStringLiteral(":/ostrand/%1.png").arg(QLatin1String(name)));
}

QIcon applicationIcon()
{
    initResources();
    QIcon result;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        result.addFile(QStringLiteral(":/ostrand/app_%1.png").arg(size));
    return result;
}

} // namespace ostrand
