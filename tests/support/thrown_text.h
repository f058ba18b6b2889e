#pragma once

#include <QTest>

#include <exception>
#include <string>

/** The text of the exception that `function` throws; "nothing thrown" when it throws none. */
template <typename Function>
std::string thrownText(Function function)
{
    try {
        function();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "nothing thrown";
}

namespace QTest {

/** So that QCOMPARE shows the two texts that differ. */
template <>
inline char* toString(const std::string& text)
{
    return qstrdup(text.c_str());
}

} // namespace QTest
