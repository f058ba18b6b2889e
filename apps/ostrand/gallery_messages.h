#pragma once

#include <QString>

#include <functional>
#include <vector>

class QSettings;
class QWidget;

namespace trovek {
class MessageBox;
}

namespace ostrand {

/** One entry of the message catalogue, to be made with sample values. */
struct SampleMessage
{
    QString name;
    /** The box belongs to the parent. */
    std::function<trovek::MessageBox*(QWidget* parent, QSettings* settings)> make;
};

/** All of the catalogue, in its order. */
std::vector<SampleMessage> sampleMessages();

} // namespace ostrand
