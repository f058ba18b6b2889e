#pragma once

#include <gcode/gcode_command.h>
#include <gcode/gcode_program.h>
#include <gcode/gcode_reader.h>
#include <gcode/machine_definition.h>
#include <gcode/number_text.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QtTest>

#include <algorithm>
#include <string>
#include <vector>

/** What the tests of G-code have in common: machines, files, and commands as short texts. */
namespace gcode_test {

using namespace trovek;
using namespace trovek::service;

inline MachineDefinition machineOfType(Printer::Type type)
{
    const MachineDefinitions definitions = defaultMachineDefinitions();
    return definitions.archetypes.at(static_cast<std::size_t>(type) - 1);
}

inline std::string fileBytes(const char* name)
{
    QFile file(QStringLiteral(TROVEK_TEST_DATA "/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", name);
    return file.readAll().toStdString();
}

inline std::vector<GCodeSection> sectionsOf(const std::string& gcode)
{
    std::vector<GCodeSection> sections;
    sections.push_back({"", byteSourceOf(gcode)});
    return sections;
}

inline std::string positionText(const MachinePosition& position)
{
    std::string text;
    for (std::size_t i = 0; i < position.size(); ++i)
        text += (i ? " " : "") + numberText(position[i]);
    return text;
}

struct CommandText
{
    std::string operator()(const MoveCommand& move) const
    {
        return "move " + positionText(move.target) + " at " + numberText(move.feed) +
               (move.extruding ? " pushing" : "");
    }
    std::string operator()(const SetPositionCommand& set) const
    {
        return "set " + positionText(set.position);
    }
    std::string operator()(const HomeCommand& home) const
    {
        std::string axes;
        for (std::size_t i = 0; i < 3; ++i)
            axes += home.axes[i] ? std::string(1, "XYZ"[i]) : "";
        return "home " + axes + " to " + positionText(home.position);
    }
    std::string operator()(const ToolChangeCommand& change) const
    {
        return "tool " + std::to_string(change.tool);
    }
    std::string operator()(const ToolTemperatureCommand& heat) const
    {
        return "heat " + std::to_string(heat.tool) + " to " + std::to_string(heat.celsius) +
               (heat.wait ? " and wait" : "");
    }
    std::string operator()(const PlatformTemperatureCommand& heat) const
    {
        return "platform to " + std::to_string(heat.celsius) + (heat.wait ? " and wait" : "");
    }
    std::string operator()(const FanCommand& fan) const
    {
        return "fan " + std::to_string(fan.tool) + (fan.on ? " on" : " off");
    }
    std::string operator()(const DwellCommand& dwell) const
    {
        return "dwell " + std::to_string(dwell.milliseconds);
    }
    std::string operator()(const MotorsCommand& motors) const
    {
        std::string names;
        for (std::size_t i = 0; i < 5; ++i)
            names += motors.motors[i] ? std::string(1, "XYZAB"[i]) : "";
        return "motors " + names + (motors.enable ? " on" : " off");
    }
    std::string operator()(const MessageCommand& message) const
    {
        return "message \"" + message.text + "\"";
    }
    std::string operator()(const ProgressCommand& progress) const
    {
        return "progress " + std::to_string(progress.percent);
    }
};

/** All commands of a text, then what was thrown and what was remarked, joined by line feeds. */
inline QString programText(const MachineDefinition& machine, const std::string& gcode,
                           GCodeProgram::ColdExtrusion cold = GCodeProgram::CountCold)
{
    GCodeProgram program(machine, sectionsOf(gcode), cold);
    MachineCommand command;
    QStringList texts;
    try {
        while (program.next(command))
            texts += QString::fromStdString(std::visit(CommandText(), command.action));
    } catch (const GCodeError& error) {
        texts +=
            QStringLiteral("error %1: %2").arg(error.kind()).arg(QString::fromUtf8(error.what()));
    }
    const std::string remarks = program.remarks().toString();
    if (!remarks.empty())
        texts += QString::fromStdString(remarks);
    return texts.join(QLatin1Char('\n'));
}

} // namespace gcode_test
