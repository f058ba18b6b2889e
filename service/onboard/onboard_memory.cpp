#include "onboard/onboard_memory.h"

#include "driver.h"

#include <trovek/log.h>

#include <QDateTime>

#include <algorithm>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\onboard\\onboard_memory";

OnboardMemory::OnboardMemory(MachineDriver& driver, const OnboardMaps& maps, const OnboardMap& map,
                             const QString& folder)
    : m_driver(driver)
    , m_maps(maps)
    , m_map(map)
    , m_backups(folder)
{}

Json::Value OnboardMemory::read()
{
    return m_map.read(current());
}

void OnboardMemory::write(const Json::Value& document)
{
    const QByteArray before = current();
    const QByteArray after = m_map.write(document, before);
    backUp(before);
    keep(after);
}

void OnboardMemory::makeBackup()
{
    backUp(current());
}

void OnboardMemory::startReset()
{
    makeBackup();
    m_driver.resetMemory(m_map.factoryImage());
}

void OnboardMemory::checkReset() const
{
    if (m_driver.readMemory(0, kOnboardBytes) != m_map.factoryImage())
        throw std::runtime_error("The machine did not take its factory settings");
}

std::vector<EepromBackup> OnboardMemory::backups() const
{
    std::vector<EepromBackup> list = m_backups.list();
    const auto isForeign = [this](const EepromBackup& backup) {
        const auto layout = layoutOfImage(m_backups.image(backup.name));
        return !layout || !(*layout == m_map.layout());
    };
    list.erase(std::remove_if(list.begin(), list.end(), isForeign), list.end());
    return list;
}

Json::Value OnboardMemory::readBackup(const std::string& name) const
{
    const QByteArray image = m_backups.image(name);
    if (image.isEmpty())
        throw UnknownBackupError("There is no such backup (any more): " + name);
    const auto layout = layoutOfImage(image);
    if (!layout)
        throw UnknownBackupError("The backup is damaged: " + name);
    if (!(*layout == m_map.layout())) {
        throw UnknownBackupError("The backup was made with firmware " +
                                 std::to_string(layout->major) + "." +
                                 std::to_string(layout->minor) + ": " + name);
    }
    return m_map.read(image);
}

/** The image, in this firmware's layout from now on. */
QByteArray OnboardMemory::current()
{
    const QByteArray image = m_driver.readMemory(0, kOnboardBytes);
    const auto layout = layoutOfImage(image);
    if (layout && *layout == m_map.layout())
        return image;

    QByteArray usable = m_map.factoryImage();
    const OnboardMap* const earlier = layout ? m_maps.find(*layout) : nullptr;
    if (earlier != nullptr && layout->type == m_map.layout().type)
        usable = m_map.convert(*earlier, image);
    if (layout) {
        TROVEK_LOG(1) << "The onboard memory is of another firmware" << std::endl;
        backUp(image);
    } else if (image.count(kErasedByte) == image.size()) {
        TROVEK_LOG(1) << "The onboard memory is erased and gets factory values" << std::endl;
    } else {
        TROVEK_LOG(0) << "The onboard memory is damaged and gets factory values" << std::endl;
    }
    keep(usable);
    return usable;
}

void OnboardMemory::backUp(const QByteArray& image) const
{
    m_backups.add(image, QDateTime::currentMSecsSinceEpoch());
}

void OnboardMemory::keep(const QByteArray& image)
{
    if (!m_driver.writeMemory(0, image) || m_driver.readMemory(0, image.size()) != image)
        throw std::runtime_error("The machine did not keep its settings");
}

} // namespace trovek::service
