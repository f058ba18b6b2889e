#pragma once

#include "core/method_adapter_table.h"
#include "support/scripted_service.h"

#include <rpcwire/json_text.h>
#include <trovek-ui/methods_qt.h>
#include <trovek-ui/trovekqt.h>
#include <trovek/text.h>

#include <QMetaMethod>
#include <QSignalSpy>

#include <set>
#include <string>

namespace trovek {

inline QMetaMethod method(const QObject& object, const QByteArray& signature)
{
    return object.metaObject()->method(object.metaObject()->indexOfMethod(signature));
}

/** "versionReceived(int,int,int)" of a declaration with the parameters' names. */
inline QByteArray signatureOf(const QByteArray& declaration)
{
    QByteArrayList parameters;
    const int open = declaration.indexOf('(');
    for (const QByteArray& parameter : declaration.mid(open + 1).chopped(1).split(','))
        parameters.append(parameter.trimmed().split(' ').first());
    return declaration.left(open) + '(' + parameters.join(',') + ')';
}

inline QByteArray declarationOf(const QMetaMethod& method)
{
    QByteArrayList parameters;
    for (int i = 0; i < method.parameterCount(); ++i)
        parameters.append(method.parameterTypes().at(i) + ' ' + method.parameterNames().at(i));
    return method.name() + '(' + parameters.join(", ") + ')';
}

inline QString textOf(const QVariant& argument)
{
    const int type = argument.userType();
    QStringList parts;
    if (type == QMetaType::QString)
        return QLatin1Char('"') + argument.toString() + QLatin1Char('"');
    if (type == qMetaTypeId<std::string>())
        return QLatin1Char('"') + toQString(argument.value<std::string>()) + QLatin1Char('"');
    if (type == qMetaTypeId<MachineName>())
        return QLatin1Char('"') + toQString(argument.value<MachineName>().name()) +
               QLatin1Char('"');
    if (type == qMetaTypeId<digitizer::MeshID>())
        return QString::number(argument.value<digitizer::MeshID>().value());
    if (type == qMetaTypeId<digitizer::PointCloudID>())
        return QString::number(argument.value<digitizer::PointCloudID>().value());
    if (type == qMetaTypeId<std::set<FirmwareVersion>>()) {
        for (const FirmwareVersion& version : argument.value<std::set<FirmwareVersion>>())
            parts.append(toQString(version.str() + ' ' + version.description()));
        return QLatin1Char('{') + parts.join(QStringLiteral(", ")) + QLatin1Char('}');
    }
    if (type == qMetaTypeId<std::set<std::string>>()) {
        for (const std::string& name : argument.value<std::set<std::string>>())
            parts.append(toQString(name));
        return QLatin1Char('{') + parts.join(QStringLiteral(", ")) + QLatin1Char('}');
    }
    return argument.toString();
}

/** What an adapter emits, as "signal(arguments)". */
class Emissions
{
public:
    Emissions(const QObject& adapter, const AdapterKind& kind)
        : m_success(&adapter, method(adapter, signatureOf(kind.success)))
        , m_failure(&adapter, method(adapter, signatureOf(kind.failure)))
        , m_successName(QString::fromLatin1(kind.success.left(kind.success.indexOf('('))))
    {}

    /** The successes first. */
    QStringList texts() const
    {
        return textsOf(m_success, m_successName) + textsOf(m_failure, QStringLiteral("failed"));
    }

private:
    static QStringList textsOf(const QSignalSpy& spy, const QString& name)
    {
        QStringList texts;
        for (const QList<QVariant>& arguments : spy) {
            QStringList parts;
            for (const QVariant& argument : arguments)
                parts.append(textOf(argument));
            texts.append(QStringLiteral("%1(%2)").arg(name, parts.join(QStringLiteral(", "))));
        }
        return texts;
    }

    QSignalSpy m_success;
    QSignalSpy m_failure;
    QString m_successName;
};

/** A connected facade. */
struct World
{
    World() { facade.connectToDaemon(service.address()); }

    void answer(const std::string& method, const std::string& json)
    {
        Json::Value value;
        std::string error;
        if (!rpcwire::parseJson(json, &value, &error))
            qFatal("Not JSON: %s", json.c_str());
        service.answerNext(method, value);
    }

    ScriptedService service;
    TrovekQt facade;
};

} // namespace trovek
