#include "trovek-ui/profile_combo_box.h"

#include "trovek-ui/profile_list_model.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QScrollBar>

#include <algorithm>

namespace trovek {

namespace {

constexpr int kDefaultRow = 1;
/** In characters. The names of folders may be much longer. */
constexpr int kWidth = 25;
constexpr int kLargestPopupWidth = 60;

} // namespace

class ProfileComboBox::Private
{
public:
    Private(bool withPresets, bool withBuiltIns, ProfileComboBox* box)
        : model(new ProfileListModel(withPresets, withBuiltIns, box))
        , fallback(SlicerConfiguration::Custom)
    {}

    /** Owned by the box as its child. */
    ProfileListModel* const model;
    FakeProfile fallback;
    bool isEnabled = false;
};

ProfileComboBox::ProfileComboBox(bool withPresets, bool withBuiltIns, QWidget* parent)
    : QComboBox(parent)
    , d(std::make_unique<Private>(withPresets, withBuiltIns, this))
{
    // The signal's argument is known to Qt by the name that the header has for it.
    qRegisterMetaType<Profile*>("Profile*");
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(kWidth);
    // Before the base class, which would select a neighbour when it hears the same.
    connect(d->model, &ProfileListModel::rowsAboutToBeRemoved, this,
            [this](const QModelIndex&, int first, int last) { leaveRows(first, last); });
    setModel(d->model);
    setCurrentIndex(kDefaultRow);
    d->isEnabled = isCurrentEnabled();
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ProfileComboBox::indexChanged);
    connect(d->model, &ProfileListModel::dataChanged, this, &ProfileComboBox::checkEnabled);
}

ProfileComboBox::~ProfileComboBox() = default;

Profile* ProfileComboBox::currentProfile() const
{
    Profile* const profile = d->model->profileAt(currentIndex());
    return profile == nullptr ? &d->fallback : profile;
}

bool ProfileComboBox::isCurrentEnabled() const
{
    const QStandardItem* const item = d->model->item(currentIndex());
    return item != nullptr && item->isEnabled();
}

ProfileListModel& ProfileComboBox::profileModel() const
{
    return *d->model;
}

void ProfileComboBox::selectProfile(const QString& name)
{
    d->model->update();
    for (int row = 0; row < d->model->rowCount(); ++row) {
        const Profile* const profile = d->model->profileAt(row);
        if (profile != nullptr && profile->name() == name) {
            setCurrentIndex(row);
            return;
        }
    }
}

void ProfileComboBox::selectProfile(const QDir& dir)
{
    d->model->update();
    const QString name = QDir(dir.absolutePath()).dirName();
    for (int row = 0; row < d->model->rowCount(); ++row) {
        const Profile* const profile = d->model->profileAt(row);
        if (profile != nullptr && profile->isOnDisk() && profile->name() == name) {
            setCurrentIndex(row);
            return;
        }
    }
}

void ProfileComboBox::indexChanged(int)
{
    emit currentProfileChanged(currentProfile());
    checkEnabled();
}

void ProfileComboBox::showPopup()
{
    d->model->update();
    QAbstractItemView& list = *view();
    list.setTextElideMode(Qt::ElideMiddle);
    const int wanted = list.sizeHintForColumn(0) + list.verticalScrollBar()->sizeHint().width();
    const int limit = kLargestPopupWidth * fontMetrics().averageCharWidth();
    list.setMinimumWidth(std::min(wanted, limit));
    // Some styles open a list as wide as its longest name, up to the whole screen.
    list.window()->setMaximumWidth(std::max(limit, width()));
    QComboBox::showPopup();
}

bool ProfileComboBox::event(QEvent* event)
{
    // Whoever edited a profile comes back to the window.
    if (event->type() == QEvent::WindowActivate)
        d->model->update();
    return QComboBox::event(event);
}

/** The default instead of a neighbour, which nobody has chosen. */
void ProfileComboBox::leaveRows(int first, int last)
{
    if (currentIndex() < first || currentIndex() > last)
        return;
    const auto isGoing = [first, last](int row) {
        return row >= first && row <= last;
    };
    int row = kDefaultRow;
    if (isGoing(row) || row >= count())
        row = isGoing(0) ? last + 1 : 0;
    setCurrentIndex(row < count() ? row : -1);
}

void ProfileComboBox::checkEnabled()
{
    const bool isEnabled = isCurrentEnabled();
    if (isEnabled == d->isEnabled)
        return;
    d->isEnabled = isEnabled;
    emit currentEnabledChanged(isEnabled);
}

} // namespace trovek
