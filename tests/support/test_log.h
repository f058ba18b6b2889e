#pragma once

#include <trovek/log.h>

#include <QTest>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace trovek {

/**
 * Listens to the log while it lives and fails the test for every error line that nobody announced,
 * and for every announced one that did not come. The first line of a test function:
 *
 *     TestLog log;
 *     log.expectError("No such port: ");
 */
class TestLog
{
public:
    TestLog() { addLogSink(m_sink); }

    ~TestLog()
    {
        removeLogSink(m_sink);
        verify();
    }

    TestLog(const TestLog&) = delete;
    TestLog& operator=(const TestLog&) = delete;

    /** One error line with this text in it will come, before or after this call. */
    void expectError(const std::string& part) { m_expected.push_back(part); }
    void expectError(const QString& part) { expectError(part.toStdString()); }
    void expectError(const char* part) { expectError(std::string(part)); }

    /** Error lines with this text may come, any number of them. */
    void allowErrors(const std::string& part) { m_allowed.push_back(part); }

    /** Messages of one severity so far, in order; of all severities by default. */
    std::vector<std::string> messages(int severity = -1) const
    {
        return m_sink->messages(severity);
    }

    /** True when a line of that severity (any by default) has this text in it. */
    bool contains(const std::string& part, int severity = -1) const
    {
        const std::vector<std::string> all = messages(severity);
        return std::any_of(all.begin(), all.end(),
                           [&part](const std::string& line) { return has(line, part); });
    }

    const CapturingLogSink& sink() const { return *m_sink; }

    /** Fails the test as the destructor does, and starts over. */
    void verify()
    {
        for (const std::string& line : m_sink->messages(Log::Error)) {
            const auto matches = [&line](const std::string& part) {
                return has(line, part);
            };
            const auto expected = std::find_if(m_expected.begin(), m_expected.end(), matches);
            if (expected != m_expected.end())
                m_expected.erase(expected);
            else if (std::none_of(m_allowed.begin(), m_allowed.end(), matches))
                fail("Unannounced error in the log: " + line);
        }
        for (const std::string& part : m_expected)
            fail("Announced error is missing in the log: " + part);
        m_expected.clear();
        m_sink->clear();
    }

private:
    static bool has(const std::string& line, const std::string& part)
    {
        return line.find(part) != std::string::npos;
    }

    static void fail(const std::string& text) { QTest::qFail(text.c_str(), __FILE__, __LINE__); }

    const std::shared_ptr<CapturingLogSink> m_sink = std::make_shared<CapturingLogSink>();
    std::vector<std::string> m_expected;
    std::vector<std::string> m_allowed;
};

} // namespace trovek
