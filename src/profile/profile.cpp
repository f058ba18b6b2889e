#include "trovek-ui/profile.h"

#include "profile/profile_json.h"

#include <QObject>

#include <stdexcept>

namespace trovek {

Profile::~Profile() = default;

QString Profile::path() const
{
    return QString();
}

std::vector<Printer::Type> Profile::machineTypes() const
{
    return machineTypesOf(json());
}

SlicerConfiguration::Slicer Profile::slicer() const
{
    return slicerOf(json());
}

FakeProfile::FakeProfile(SlicerConfiguration::Preset preset)
    : m_preset(preset)
{}

bool FakeProfile::isSameAs(const Profile& other) const
{
    const auto* const fake = dynamic_cast<const FakeProfile*>(&other);
    return fake != nullptr && fake->m_preset == m_preset;
}

QDir FakeProfile::copyToDisk(const QDir&, const QString&, const std::vector<Printer::Type>&) const
{
    throw std::runtime_error("Cannot copy a fake profile to disk");
}

QString FakeProfile::slicerConfigPath() const
{
    throw std::runtime_error("Cannot pass a fake profile to Trovek");
}

void FakeProfile::remove()
{
    throw std::runtime_error("Cannot delete a fake profile");
}

void FakeProfile::edit()
{
    throw std::runtime_error("Cannot edit a fake profile");
}

bool FakeProfile::isOnDisk() const
{
    return false;
}

QString FakeProfile::name() const
{
    switch (m_preset) {
    case SlicerConfiguration::Low:
        return QObject::tr("Low");
    case SlicerConfiguration::Standard:
        return QObject::tr("Standard");
    case SlicerConfiguration::High:
        return QObject::tr("High");
    case SlicerConfiguration::Custom:
        break;
    }
    return QObject::tr("Invalid Fake Profile");
}

SlicerConfiguration::Preset FakeProfile::preset() const
{
    return m_preset;
}

Json::Value FakeProfile::json() const
{
    return Json::Value();
}

} // namespace trovek
