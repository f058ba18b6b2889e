#include "trovek-ui/profile.h"

#include "profile/json_file.h"
#include "profile/profile_copy.h"
#include "util/resource_copy.h"

#include <trovek/text.h>

#include <stdexcept>

namespace trovek {

ResourceProfile::ResourceProfile(const QString& path)
    : m_path(QDir::cleanPath(path))
{}

bool ResourceProfile::isSameAs(const Profile& other) const
{
    const auto* const profile = dynamic_cast<const ResourceProfile*>(&other);
    return profile != nullptr && profile->m_path == m_path;
}

QDir ResourceProfile::copyToDisk(const QDir& target, const QString& newName,
                                 const std::vector<Printer::Type>& types) const
{
    return copyProfile(target, newName, slicer(), types,
                       [&] { copyQResource(QResource(m_path), target, newName); });
}

QString ResourceProfile::slicerConfigPath() const
{
    throw std::runtime_error("Cannot pass a resource profile to Trovek");
}

void ResourceProfile::remove()
{
    throw std::runtime_error("Cannot delete a resource profile");
}

void ResourceProfile::edit()
{
    throw std::runtime_error("Cannot edit a resource profile");
}

bool ResourceProfile::isOnDisk() const
{
    return false;
}

QString ResourceProfile::name() const
{
    return m_path.section(QLatin1Char('/'), -1);
}

SlicerConfiguration::Preset ResourceProfile::preset() const
{
    return SlicerConfiguration::Custom;
}

Json::Value ResourceProfile::json() const
{
    return readJsonFile(m_path + QLatin1String("/profile.json"),
                        "Invalid resource path " + toStdString(m_path),
                        "profile.json does not contain valid JSON");
}

} // namespace trovek
