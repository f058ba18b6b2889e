#pragma once

#include "make_dialog/text_literal.h"

#include <trovek-ui/builtin_profile_widget.h>
#include <trovek-ui/double_spin_box.h>
#include <trovek-ui/spin_box.h>

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace trovek {

using Preset = SlicerConfiguration::Preset;

inline SlicerConfiguration defaultsOf(Preset preset)
{
    return *std::unique_ptr<SlicerConfiguration>(SlicerConfiguration::defaultConfiguration(preset));
}

/** The widget with its inner widgets at hand, and what it said. */
struct ProfileNumbers
{
    template <typename T>
    T* child(const char* name) const
    {
        auto* const found = widget.findChild<T*>(QString::fromLatin1(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    QSpinBox* spin(const char* name) const { return child<QSpinBox>(name); }
    QLabel* label(const char* field) const { return child<QLabel>(QByteArray(field) + "Label"); }
    QCheckBox* heat() const { return child<QCheckBox>("heatPlatform"); }
    QDoubleSpinBox* layerHeight() const { return child<QDoubleSpinBox>("layerHeight"); }

    /** As a user reads it. */
    QString shown(const char* field) const { return child<QAbstractSpinBox>(field)->text(); }
    QStringList shown() const
    {
        return {shown("infill"),
                shown("layerHeight"),
                shown("shells"),
                shown("rightTemperature"),
                shown("leftTemperature"),
                heat()->isChecked() ? "heat"_s : "cold"_s,
                shown("platformTemperature"),
                shown("extrudingSpeed"),
                shown("travelingSpeed")};
    }

    /** The fields whose labels have a mark. */
    QStringList marked() const
    {
        QStringList fields;
        for (const char* field : kFields) {
            if (label(field)->text().endsWith(" *"_s))
                fields.append(QString::fromLatin1(field));
        }
        return fields;
    }

    /** Each signal as "preset:overridden"_s. */
    QStringList takeSignals()
    {
        QStringList all;
        while (!changed.isEmpty()) {
            const QVariantList arguments = changed.takeFirst();
            all.append("%1:%2"_s.arg(arguments.at(0).value<Preset>())
                           .arg(arguments.at(1).toBool() ? "yes"_s : "no"_s));
        }
        return all;
    }

    static constexpr const char* kFields[] = {"infill",          "shells",
                                              "layerHeight",     "rightTemperature",
                                              "leftTemperature", "platformTemperature",
                                              "extrudingSpeed",  "travelingSpeed"};

    BuiltInProfileWidget widget;
    QSignalSpy changed{&widget, &BuiltInProfileWidget::overridednessChanged};
};

} // namespace trovek
