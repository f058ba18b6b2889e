#pragma once

#include <pathscope/gcode_parser.h>

#include <QString>
#include <QStringList>

#include <string>

/** The moves of a program as a test can compare them: "extrude 10 0 0.2, retract". */
inline QString movesInWords(const pathscope::Toolpaths& paths)
{
    using pathscope::MoveKind;
    QStringList moves;
    for (std::uint64_t i = 0; i < paths.segmentCount; ++i) {
        const pathscope::PathPoint& end = paths.endOf(i);
        const QString place = QStringLiteral("%1 %2 %3").arg(end.x).arg(end.y).arg(end.z);
        switch (end.kind()) {
        case MoveKind::Extrude:
            moves << QStringLiteral("extrude ") + place;
            break;
        case MoveKind::Travel:
            moves << QStringLiteral("travel ") + place;
            break;
        case MoveKind::Retract:
            moves << QStringLiteral("retract");
            break;
        case MoveKind::Unretract:
            moves << QStringLiteral("unretract");
            break;
        case MoveKind::ToolChange:
            moves << QStringLiteral("tool %1").arg(paths.styles[end.style()].tool);
            break;
        }
    }
    return moves.join(QStringLiteral(", "));
}

inline QString movesInWords(const std::string& program)
{
    return movesInWords(*pathscope::parseGCode(program));
}
