#include "make_dialog/preset_long_name.h"

#include "trovek-ui/extruder_settings_widget.h"

#include <stdexcept>

namespace trovek {

QString presetLongName(SlicerConfiguration::Preset preset, bool overridden)
{
    const QString mark = overridden ? QStringLiteral(" *") : QString();
    switch (preset) {
    case SlicerConfiguration::Low:
        return ExtruderSettingsWidget::tr("&Low (Faster)%1").arg(mark);
    case SlicerConfiguration::Standard:
        return ExtruderSettingsWidget::tr("&Standard%1").arg(mark);
    case SlicerConfiguration::High:
        return ExtruderSettingsWidget::tr("&High (Slower)%1").arg(mark);
    case SlicerConfiguration::Custom:
        break;
    }
    throw std::runtime_error("presetLongName: invalid type");
}

} // namespace trovek
