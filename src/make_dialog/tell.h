#pragma once

#include "trovek-ui/message_box.h"

#include <utility>

class QWidget;

namespace trovek {

/** Shows a message, whose parent is its last argument; its box does not stay. */
template <typename Notice, typename... Arguments>
void tell(Arguments&&... arguments)
{
    Notice notice(std::forward<Arguments>(arguments)...);
    notice.exec();
    delete notice.box();
}

/** The same for a question; gives the code of the answer. */
template <typename Question, typename... Arguments>
auto ask(Arguments&&... arguments)
{
    Question question(std::forward<Arguments>(arguments)...);
    const auto answer = question.exec();
    delete question.box();
    return answer;
}

} // namespace trovek
