#pragma once

#include "make_dialog/make_world.h"

#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/make_dialog.h>

#include <QLabel>
#include <QRadioButton>

#include <stdexcept>

namespace trovek {

inline constexpr char kUnit[] = "src\\make_dialog\\make_dialog";

inline const auto kMachine = ScriptedService::machine("left", Printer::Fabrino2);
inline const auto kDual = ScriptedService::machine("dual", Printer::Fabrino2X);
inline const auto kArchetype = ScriptedService::archetype(Printer::Fabrino2);
inline const auto kDualArchetype = ScriptedService::archetype(Printer::Fabrino2X);

/** What the flow behind the main button logs, with what comes between. */
inline QStringList flow(std::initializer_list<const char*> between)
{
    return words({"Make or export clicked"}) + words(between) + words({"End of make/export"});
}

inline Json::Value object(const char* name, const Json::Value& value)
{
    Json::Value result(Json::objectValue);
    result[name] = value;
    return result;
}

inline QString headingOf(const QWidget* box)
{
    return messageTexts(box).value(0);
}

/** The base dialog with answers that a test gives, and a memory of what was asked. */
class PlainDialog : public MakeDialog
{
    Q_OBJECT

public:
    explicit PlainDialog(MakeWorld& world, const Printer* printer = nullptr,
                         bool showCboArchetypes = true)
        : MakeDialog(world.facade, world.inputFile, &world.settings, printer, world.folder.path(),
                     showCboArchetypes)
    {}

    /** As a user does, on the shown dialog. */
    void clickMain()
    {
        show();
        QTest::mouseClick(button("mainButton"), Qt::LeftButton);
    }

    QPushButton* button(const char* name) const
    {
        return findChild<QPushButton*>(QString::fromLatin1(name));
    }
    QRadioButton* radio(const char* name) const
    {
        return findChild<QRadioButton*>(QString::fromLatin1(name));
    }
    QLabel* label(const char* name) const { return findChild<QLabel*>(QString::fromLatin1(name)); }
    MachineComboBox* machines() const { return findChild<MachineComboBox*>(); }

    QString selected() const
    {
        const Printer* const machine = machines()->machine();
        return machine == nullptr ? QStringLiteral("none")
                                  : QString::fromStdString(machine->key().name());
    }

    std::function<bool()> finalCheck = [] {
        return true;
    };
    std::function<void()> whenSanitized = [] {
    };
    bool skip = false;
    QStringList calls;

protected:
    Orvane::Material singleMaterial() override { return Orvane::Flexible; }
    Orvane::Material leftMaterial() override { return Orvane::ABS; }
    Orvane::Material rightMaterial() override { return Orvane::Dissolvable; }

    SlicerConfiguration slicerConfiguration() override
    {
        calls.append(QStringLiteral("slicerConfiguration"));
        SlicerConfiguration configuration;
        configuration.setLayerHeight(0.125);
        return configuration;
    }

    bool skipStartEndCode() override
    {
        calls.append(QStringLiteral("skipStartEndCode"));
        return skip;
    }

    void saveSettings() override
    {
        calls.append(QStringLiteral("saveSettings"));
        MakeDialog::saveSettings();
    }

    bool finalMakeOrExportCheck() override
    {
        calls.append(QStringLiteral("finalMakeOrExportCheck"));
        return finalCheck();
    }

    void sanitize() override
    {
        MakeDialog::sanitize();
        ++sanitized;
        whenSanitized();
    }

public:
    int sanitized = 0;
};

} // namespace trovek
