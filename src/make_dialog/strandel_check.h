#pragma once

class QString;
class QWidget;

namespace trovek {

class Profile;
class TrovekQt;

/**
 * Whether the slicer takes the settings of a user's profile; the service knows. Older ones are
 * brought up to date if the user agrees. Whatever keeps the profile from being used is told.
 *
 * May run the event loop, in which the profile and the parent may go away.
 * @param parent of the messages
 * @param error  gets what is wrong, where the message is not the place to say it; else empty
 */
bool checkStrandelConfig(TrovekQt& facade, const Profile& profile, QWidget* parent, QString* error);

} // namespace trovek
