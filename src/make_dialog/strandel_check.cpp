#include "make_dialog/strandel_check.h"

#include "make_dialog/tell.h"
#include "profile/strandel_config.h"

#include "trovek-ui/messages.h"
#include "trovek-ui/profile.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDir>
#include <QPointer>
#include <QWidget>

#include <exception>
#include <stdexcept>

static constexpr char kLogUnit[] = "src\\make_dialog\\make_thing_dialog";

namespace trovek {

namespace {

bool offerUpgrade(TrovekQt& facade, const QDir& folder, QWidget* parent)
{
    const QPointer<QWidget> guard(parent);
    const auto answer = ask<message::StrandelConfigNeedsUpgrade>(parent);
    if (guard.isNull() || answer != message::StrandelConfigNeedsUpgrade::Upgrade)
        return false;
    TROVEK_LOG(1) << "Upgrading config" << std::endl;
    // As it is now: the user may have edited the file while the question was open.
    writeStrandelConfig(folder, facade.upgradeStrandelConfig(readStrandelConfig(folder)));
    return true;
}

bool check(TrovekQt& facade, const QDir& folder, QWidget* parent)
{
    switch (facade.strandelConfigVersionCheck(readStrandelConfig(folder))) {
    case Trovek::UpToDate:
        TROVEK_LOG(1) << "Up-to-date" << std::endl;
        return true;
    case Trovek::TooNew:
        tell<message::StrandelConfigTooNew>(parent);
        return false;
    case Trovek::NeedsUpgrade:
        return offerUpgrade(facade, folder, parent);
    }
    throw std::runtime_error("Invalid version check value");
}

} // namespace

bool checkStrandelConfig(TrovekQt& facade, const Profile& profile, QWidget* parent, QString* error)
{
    error->clear();
    if (!profile.isOnDisk())
        return true;
    const QPointer<QWidget> guard(parent);
    const QDir folder(profile.path());
    try {
        return profile.slicer() != SlicerConfiguration::Strandel || check(facade, folder, parent);
    } catch (const std::exception& caught) {
        TROVEK_LOG(0) << caught.what() << std::endl;
        *error = toQString(caught.what());
        if (!guard.isNull())
            tell<message::FailedToStartPrint>(parent);
        return false;
    }
}

} // namespace trovek
