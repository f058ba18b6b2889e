#include <trovek-ui/machine_types.h>
#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/message_box.h>
#include <trovek-ui/trovekhandle.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

// Constructs what a host constructs first, and checks that pictures and tables came with the
// library.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    trovek::ui::TrovekHandle handle(&settings);

    const bool ok =
        !handle->isConnected() &&
        !trovek::printerTypeToPixmap(trovek::Printer::Fabrino2).isNull() &&
        trovek::printerTypeToIdentifier(trovek::Printer::Fabrino2) == QStringLiteral("fabrino_2");
    return ok ? 0 : 1;
}
